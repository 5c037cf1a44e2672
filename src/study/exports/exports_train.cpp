#include "study/exports/call_frame.h"
#include "study/exports/handles.h"
#include "study/options.h"
#include "study/train/training.h"
#include "study/watched_work.h"

#include <limits>

namespace api = corvath::study::api;

using corvath::study::MemoryTableSource;
using corvath::study::Options;
using corvath::study::Progress;
using corvath::study::Project;
using corvath::study::Refusal;
using corvath::study::Training;
using corvath::study::TrainRequest;

namespace {

TrainRequest TrainRequestOf(const char* text) {
  const Options options(text, {"inputs", "responses", "ignored", "discrete", "dates", "criteria",
                               "skip_incomplete", "seed", "budget"});
  TrainRequest request;
  request.columns.inputs = options.GetUniqueNames("inputs");
  request.columns.responses = options.GetUniqueNames("responses");
  for (const char* key : {"inputs", "responses"})
    if (!options.Has(key)) throw Refusal(std::string(key) + ": names of columns are wanted");
  request.columns.ignored = options.GetUniqueNames("ignored");
  request.columns.discrete = options.GetUniqueNames("discrete");
  request.columns.dates = options.GetUniqueNames("dates");
  request.criteria = options.GetNames("criteria");
  request.skip_incomplete = options.GetBool("skip_incomplete");
  request.seed = static_cast<std::uint32_t>(
      options.GetCount("seed", request.seed, std::numeric_limits<std::uint32_t>::max()));
  request.budget = options.GetNumber("budget", request.budget);
  return request;
}

}  // namespace

int zelstudy_train(const zelstudy_table* table, const char* options, zelstudy_progress progress,
                   void* user, zelstudy_project** project, zelstudy_result** out) {
  if (project != nullptr) *project = nullptr;
  std::unique_ptr<zelstudy_project> trained;
  const int status = api::CallFor(out, [&] {
    api::Require(project, "project");
    MemoryTableSource source(api::Require(table, "table").table);
    Training training(source, TrainRequestOf(options));
    corvath::study::RunWatched(api::ToProgress(progress, user),
                               [&](const Progress& watched) { training.Run(watched); });
    auto result = api::MakeResult(training.GetDocument());
    trained = std::make_unique<zelstudy_project>(
        zelstudy_project{Project::FromTraining(training.GetStudy().project)});
    return result;
  });
  if (status == ZELSTUDY_OK) *project = trained.release();
  return status;
}
