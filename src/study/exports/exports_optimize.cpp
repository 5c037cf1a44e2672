#include "study/decide/optimize.h"
#include "study/exports/call_frame.h"
#include "study/exports/handles.h"
#include "study/options.h"
#include "study/watched_work.h"

#include <limits>

namespace api = corvath::study::api;

using corvath::study::NamedArray;
using corvath::study::Optimization;
using corvath::study::OptimizeRequest;
using corvath::study::Options;
using corvath::study::Progress;
using corvath::study::Refusal;
using corvath::study::Result;

namespace {

constexpr std::uint64_t kMostDesigns = 10000;
constexpr std::uint64_t kMostStarts = 100000;

OptimizeRequest OptimizeRequestOf(const char* text) {
  const Options options(
      text, {"minimize", "maximize", "limits", "project_limits", "bounds", "fixed", "distributions",
             "robust", "seed", "starts", "points", "next", "next_by"});
  OptimizeRequest request;
  request.minimize = options.GetNames("minimize");
  request.maximize = options.GetNames("maximize");
  request.limits = options.GetNames("limits");
  request.own_limits = options.GetBool("project_limits", true);
  request.bounds = options.GetNames("bounds");
  request.fixed = options.GetNames("fixed");
  request.distributions = options.GetNames("distributions");
  request.robust = options.GetNumber("robust", 0.0);
  request.seed = static_cast<std::uint32_t>(
      options.GetCount("seed", request.seed, std::numeric_limits<std::uint32_t>::max()));
  request.starts = options.GetCount("starts", request.starts, kMostStarts);
  request.points = options.GetCount("points", 0, kMostDesigns);
  request.next = options.GetCount("next", 0, kMostDesigns);
  const std::string by = options.GetText("next_by");
  if (!by.empty() && by != "improvement" && by != "error")
    throw Refusal("next_by: \"" + by + "\" is neither improvement nor error");
  request.next_by_error = by == "error";
  return request;
}

Result OptimumResultOf(const Optimization& optimization) {
  using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  Result result;
  result.document = optimization.document;
  result.document["columns"] = Json::Value(Json::arrayValue);
  for (const std::string& column : optimization.columns) result.document["columns"].append(column);
  if (!optimization.refusal.empty()) result.document["message"] = optimization.refusal;
  const Eigen::MatrixXd& designs = optimization.designs;
  NamedArray& array = result.Add("designs", static_cast<std::size_t>(designs.rows()),
                                 static_cast<std::size_t>(designs.cols()));
  Eigen::Map<RowMajor>(array.values.data(), designs.rows(), designs.cols()) = designs;
  return result;
}

}  // namespace

int zelstudy_optimize(const zelstudy_project* project, const char* options,
                      zelstudy_progress progress, void* user, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const auto& opened = api::Require(project, "project").project;
    const OptimizeRequest request = OptimizeRequestOf(options);
    Optimization found;
    corvath::study::RunWatched(api::ToProgress(progress, user), [&](const Progress& watched) {
      found = Optimize(opened, request, watched);
    });
    return api::MakeResult(OptimumResultOf(found));
  });
}
