#include "study/describe/project_report.h"
#include "study/exports/call_frame.h"
#include "study/exports/handles.h"
#include "study/options.h"
#include "study/table/output_file.h"
#include "study/watched_work.h"

namespace api = corvath::study::api;

using corvath::study::ExportModels;
using corvath::study::Options;
using corvath::study::OutputFile;
using corvath::study::ReportProject;
using corvath::study::WrittenProject;

namespace {

/// Into the file that the options name, or as the member "text".
Json::Value Deliver(const WrittenProject& written, const Options& options) {
  Json::Value document;
  document["warnings"] = Json::Value(Json::arrayValue);
  for (const std::string& warning : written.warnings) document["warnings"].append(warning);
  const std::string path = options.GetText("out");
  if (path.empty()) {
    document["text"] = written.text;
    return document;
  }
  OutputFile file(path, nullptr, nullptr);
  file.Write(written.text);
  file.Commit();
  document["out"] = path;
  return document;
}

void Begin(const corvath::study::Progress& progress, const char* text) {
  if (progress && !progress(0.0, text)) throw corvath::study::Cancelled();
}

}  // namespace

int zelstudy_export(const zelstudy_project* project, const char* options,
                    zelstudy_progress progress, void* user, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const auto& source = api::Require(project, "project").project;
    const Options wanted(options, {"format", "name", "responses", "out"});
    const std::string format = wanted.Has("format") ? wanted.GetText("format") : "json";
    Begin(api::ToProgress(progress, user), "export");
    return api::MakeResult(Deliver(
        ExportModels(source, format, wanted.GetText("name"), wanted.GetUniqueNames("responses")),
        wanted));
  });
}

int zelstudy_report(const zelstudy_project* project, const char* options,
                    zelstudy_progress progress, void* user, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const auto& source = api::Require(project, "project").project;
    const Options wanted(options, {"out", "with", "minimize", "maximize"});
    corvath::study::ReportRequest request;
    request.with = wanted.GetUniqueNames("with");
    request.minimize = wanted.GetNames("minimize");
    request.maximize = wanted.GetNames("maximize");
    WrittenProject page;
    corvath::study::RunWatched(api::ToProgress(progress, user), [&](const auto& watched) {
      page = ReportProject(source, request, watched);
    });
    return api::MakeResult(Deliver(page, wanted));
  });
}
