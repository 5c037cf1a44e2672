#include "study/analysis/propagation_report.h"
#include "study/analysis/sensitivity_report.h"
#include "study/exports/call_frame.h"
#include "study/exports/handles.h"
#include "study/options.h"
#include "study/watched_work.h"

#include <cstdint>
#include <limits>
#include <optional>

namespace api = corvath::study::api;

using corvath::analysis::PropagationSettings;
using corvath::analysis::SensitivitySettings;
using corvath::study::Options;
using corvath::study::Progress;
using corvath::study::PropagationReport;
using corvath::study::SensitivityReport;
using corvath::study::VariationRequest;
using corvath::study::VariedStudy;

namespace {

constexpr std::uint64_t kMostRows = 1000000000;

VariationRequest VariationOf(const Options& options) {
  VariationRequest request;
  request.over = options.GetText("over");
  request.distributions = options.GetNames("distributions");
  request.fixed = options.GetNames("fixed");
  request.criteria = options.GetNames("criteria");
  return request;
}

Eigen::Index CountOf(const Options& options, const char* key, Eigen::Index otherwise) {
  return static_cast<Eigen::Index>(
      options.GetCount(key, static_cast<std::uint64_t>(otherwise), kMostRows));
}

std::uint32_t SeedOf(const Options& options) {
  return static_cast<std::uint32_t>(
      options.GetCount("seed", 1, std::numeric_limits<std::uint32_t>::max()));
}

/// The report's document, made where the caller's function can watch it.
template <class Report, class Settings>
std::unique_ptr<zelstudy_result> MakeReport(const VariedStudy& study, const Settings& settings,
                                            zelstudy_progress progress, void* user) {
  std::optional<Report> report;
  corvath::study::RunWatched(api::ToProgress(progress, user), [&](const Progress& watched) {
    report.emplace(study, settings, watched);
  });
  return api::MakeResult(report->GetDocument());
}

}  // namespace

int zelstudy_sensitivity(const zelstudy_project* project, const char* options,
                         zelstudy_progress progress, void* user, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const Options wanted(
        options, {"over", "distributions", "fixed", "criteria", "n", "second_order", "seed"});
    SensitivitySettings settings;
    settings.num_base = CountOf(wanted, "n", settings.num_base);
    settings.second_order = wanted.GetBool("second_order");
    settings.seed = SeedOf(wanted);
    const VariedStudy study(api::Require(project, "project").project, VariationOf(wanted),
                            /*needs_distributions=*/false);
    return MakeReport<SensitivityReport>(study, settings, progress, user);
  });
}

int zelstudy_propagate(const zelstudy_project* project, const char* options,
                       zelstudy_progress progress, void* user, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const Options wanted(options, {"distributions", "fixed", "criteria", "scheme", "n", "until",
                                   "most", "quantiles", "model_error", "form", "seed"});
    PropagationSettings settings;
    if (wanted.Has("scheme"))
      settings.scheme = corvath::study::ParseSampleScheme(wanted.GetText("scheme"));
    settings.num_designs = CountOf(wanted, "n", settings.num_designs);
    settings.until = wanted.GetNumber("until", settings.until);
    settings.most = CountOf(wanted, "most", settings.most);
    if (wanted.Has("quantiles")) settings.quantiles = wanted.GetNumbers("quantiles");
    settings.with_errors = wanted.GetBool("model_error");
    settings.with_form = wanted.GetBool("form", true);
    settings.seed = SeedOf(wanted);
    const VariedStudy study(api::Require(project, "project").project, VariationOf(wanted),
                            /*needs_distributions=*/true);
    return MakeReport<PropagationReport>(study, settings, progress, user);
  });
}
