#include "study/exports/call_frame.h"
#include "study/exports/handles.h"
#include "study/options.h"
#include "study/sample/sample.h"

#include <limits>
#include <stdexcept>

namespace api = corvath::study::api;

using corvath::study::NamedArray;
using corvath::study::Options;
using corvath::study::Refusal;
using corvath::study::Result;
using corvath::study::Sample;
using corvath::study::SampleInputs;
using corvath::study::SampleRequest;

namespace {

SampleInputs InputsOf(const zelstudy_project* project, const Options& options) {
  if (project == nullptr && !options.Has("inputs"))
    throw Refusal("inputs: these, or a project, are wanted");
  if (project != nullptr && options.Has("inputs"))
    throw Refusal("inputs: these, or a project, are wanted, not both");
  return project == nullptr ? SampleInputs::FromTexts(options.GetNames("inputs"))
                            : SampleInputs::FromProject(project->project);
}

Result SampleResultOf(const Sample& sample) {
  using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  constexpr std::size_t kBlock = 4096;
  Result result;
  const auto& names = sample.GetInputs().GetNames();
  result.document["scheme"] = sample.GetScheme();
  result.document["inputs"] = Json::Value(Json::arrayValue);
  for (const std::string& name : names) {
    const auto* const column = sample.GetInputs().GetColumns().Find(name);
    Json::Value json = column == nullptr ? Json::Value(Json::objectValue) : column->ToJson();
    json["name"] = name;
    result.document["inputs"].append(json);
  }
  NamedArray& points = result.Add("points", sample.GetSize(), names.size());
  for (std::size_t first = 0; first < points.rows; first += kBlock) {
    const std::size_t count = std::min(kBlock, points.rows - first);
    Eigen::Map<RowMajor>(
        points.values.data() + first * points.columns, static_cast<Eigen::Index>(count),
        static_cast<Eigen::Index>(points.columns)) = sample.GetPoints(first, count);
  }
  return result;
}

}  // namespace

int zelstudy_sample(const zelstudy_project* project, const char* options, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const Options wanted(options, {"scheme", "n", "seed", "inputs"});
    SampleRequest request;
    request.scheme = wanted.GetText("scheme");
    request.n = wanted.GetCount("n", 0, std::numeric_limits<std::uint64_t>::max());
    request.seed = static_cast<std::uint32_t>(
        wanted.GetCount("seed", request.seed, std::numeric_limits<std::uint32_t>::max()));
    try {
      return api::MakeResult(SampleResultOf(Sample(request, InputsOf(project, wanted))));
    } catch (const std::logic_error& error) {  // a scheme that these inputs or n do not suit
      throw Refusal(error.what());
    }
  });
}

int zelstudy_schemes(zelstudy_result** out) {
  return api::CallFor(out, [] {
    Json::Value document;
    for (const std::string& name : corvath::study::SchemeNames()) document["schemes"].append(name);
    return api::MakeResult(std::move(document));
  });
}
