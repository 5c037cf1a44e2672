#include "truss_optimum.h"

#include "ten_bar_truss.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace sample_projects {
namespace {

using Optimizer = corvath::algorithm::optimizer::OptimizerNLPQLP<double>;
using Settings = corvath::algorithm::optimizer::OptimizerSettingsNLPQLP<double>;
using corvath::algorithm::optimizer::NumericalDifferences;

constexpr double kStartArea = 12.0;   // in^2
constexpr double kMassUnit = 10.0;    // lb: slopes, which are the first steps, as large as areas
constexpr double kDifference = 0.01;  // in^2, step of the differences
constexpr double kAccuracy = 1e-6;
constexpr std::uint64_t kBudget = 5000;  // designs

constexpr Eigen::Index kMass = 0, kDisplacement = 1, kFirstStress = 2;
constexpr Eigen::Index kNumLimits = 1 + 2 * kNumBars;

Settings MakeSettings(const AreaBounds& bounds) {
  Settings settings(kNumBars, 1, 0, kNumLimits);
  settings.SetLowerBounds(bounds.lower);
  settings.SetUpperBounds(bounds.upper);
  settings.SetStartDesigns(Eigen::RowVectorXd::Constant(kNumBars, kStartArea));
  settings.SetNumericalDifferences(NumericalDifferences::kCentral);
  settings.SetGradientDx(kDifference);
  settings.SetAccuracy(kAccuracy);
  settings.SetMaxNumFunctionCalls(kBudget);
  return settings;
}

/// What is left of each limit, as a share of it: a constraint holds where its column is not
/// negative.
Eigen::MatrixXd Reserves(const Eigen::MatrixXd& responses) {
  Eigen::MatrixXd reserves(responses.rows(), kNumLimits);
  const auto stresses = responses.rightCols(kNumBars).array() / kLargestStress;
  reserves << 1.0 - responses.col(kDisplacement).array() / kLargestDisplacement, 1.0 - stresses,
      1.0 + stresses;
  return reserves;
}

}  // namespace

Eigen::MatrixXd AnalyseDesigns(const Eigen::MatrixXd& areas) {
  Eigen::MatrixXd responses(areas.rows(), kFirstStress + kNumBars);
  for (Eigen::Index d = 0; d < areas.rows(); ++d) {
    Truss truss;
    for (int i = 0; i < kNumBars; ++i) truss.areas[static_cast<std::size_t>(i)] = areas(d, i);
    const TrussResponse response = AnalyseTenBarTruss(truss);
    responses(d, kMass) = response.mass;
    responses(d, kDisplacement) = response.displacement;
    for (int i = 0; i < kNumBars; ++i)
      responses(d, kFirstStress + i) = response.stresses[static_cast<std::size_t>(i)];
  }
  return responses;
}

std::pair<double, std::string> LargestExcess(const Eigen::RowVectorXd& responses) {
  Eigen::Index limit = 0;
  const double reserve = Reserves(responses).row(0).minCoeff(&limit);
  return {-reserve,
          limit == 0 ? "displacement" : "stress[" + std::to_string((limit - 1) % kNumBars) + "]"};
}

TrussIterate MinimiseMass(Optimizer& optimizer, const AreaBounds& bounds,
                          const TrussResponses& respond,
                          const std::function<void(const TrussIterate&)>& on_iterate) {
  TrussIterate iterate{};
  const auto accept = [&](const Eigen::RowVectorXd& areas) {
    iterate.num_designs = optimizer.GetNumAppraised();
    iterate.areas = areas;
    iterate.responses = respond(areas);
    const auto [excess, name] = LargestExcess(iterate.responses);
    iterate.violation = std::max(excess, 0.0);
    iterate.most_used = name;
    on_iterate(iterate);
  };
  const Settings settings = MakeSettings(bounds);
  accept(settings.GetStartDesigns().row(0));

  optimizer.Initialize(settings);
  do {
    const Eigen::MatrixXd designs = optimizer.GetNextDesigns();
    const Eigen::MatrixXd responses = respond(designs);
    optimizer.SetInputs(designs);
    optimizer.SetCriteriaSuccessInfo(
        std::vector<bool>(static_cast<std::size_t>(designs.rows()), true));
    optimizer.SetObjectives(responses.col(kMass) / kMassUnit);
    optimizer.SetInequalities(Reserves(responses));
    optimizer.Appraise();
    optimizer.Adapt();
    const Eigen::MatrixXd best = optimizer.GetBestInputs();
    if (best.rows() == 1 && best.row(0) != iterate.areas) accept(best.row(0));
  } while (!optimizer.IsTerminated());
  optimizer.Finalize();
  return iterate;
}

}  // namespace sample_projects
