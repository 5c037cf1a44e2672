#include "study/exports/call_frame.h"
#include "study/exports/handles.h"
#include "study/options.h"
#include "study/solve/array_solver.h"
#include "study/solve/csv_solver.h"

#include <limits>

namespace api = corvath::study::api;

using corvath::study::ArraySolveRequest;
using corvath::study::CsvSolveRequest;
using corvath::study::Options;
using corvath::study::Project;
using corvath::study::Refusal;

namespace {

ArraySolveRequest SolveRequestOf(const Project& project, const char* text) {
  const Options options(
      text, {"responses", "criteria", "errors", "densities", "gradients", "extrapolate"});
  const auto& all = project.GetOutputs();
  ArraySolveRequest request;
  request.responses =
      options.Has("responses") ? options.GetSelection("responses", all, "response") : all;
  request.criteria = options.GetBool("criteria");
  request.errors = options.GetSelection("errors", all, "response");
  request.densities = options.GetSelection("densities", all, "response");
  request.gradients = options.GetSelection("gradients", all, "response");
  request.extrapolate = options.GetBool("extrapolate");
  return request;
}

/// @throws Refusal  it is missing, or no file
std::string FileOption(const Options& options, const char* key) {
  std::string file = options.GetText(key);
  if (file.empty() || file == "-") throw Refusal(std::string(key) + ": a file is wanted");
  return file;
}

}  // namespace

int zelstudy_solve(const zelstudy_project* project, const char* options, const double* inputs,
                   size_t n, zelstudy_progress progress, void* user, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const Project& solved = api::Require(project, "project").project;
    const ArraySolveRequest request = SolveRequestOf(solved, options);
    const std::size_t m = solved.GetInputs().size();
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max() / 2 / sizeof(double);
    if (m > 0 && n > kMost / m) throw Refusal("n: " + std::to_string(n) + " designs cannot be");
    if (m > 0 && n > 0) api::Require(inputs, "inputs");
    return api::MakeResult(SolveArray(solved, request, inputs, n, api::ToProgress(progress, user)));
  });
}

int zelstudy_solve_csv(const zelstudy_project* project, const char* options,
                       zelstudy_progress progress, void* user, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const Project& solved = api::Require(project, "project").project;
    const Options wanted(
        options, {"in", "out", "criteria", "errors", "densities", "gradients", "extrapolate"});
    CsvSolveRequest request;
    request.in = FileOption(wanted, "in");
    request.out = FileOption(wanted, "out");
    request.criteria = wanted.GetBool("criteria");
    request.errors = wanted.GetBool("errors");
    request.densities = wanted.GetBool("densities");
    request.gradients = wanted.GetNames("gradients");
    request.extrapolate = wanted.GetBool("extrapolate");
    auto summary = SolveCsv(solved, request, api::ToProgress(progress, user));
    Json::Value document;
    document["designs"] = static_cast<Json::UInt64>(summary.num_designs);
    document["outside"] = Json::Value(Json::arrayValue);
    for (const auto& [input, count] : summary.outside) {
      Json::Value json;
      json["input"] = input;
      json["designs"] = static_cast<Json::UInt64>(count);
      document["outside"].append(json);
    }
    document["notes"] = Json::Value(Json::arrayValue);
    if (!summary.format.empty()) document["notes"].append(summary.table + ": " + summary.format);
    for (const std::string& note : summary.notes) document["notes"].append(note);
    return api::MakeResult(std::move(document));
  });
}
