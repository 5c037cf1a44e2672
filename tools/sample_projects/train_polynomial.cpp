#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/linear_regression_settings.h"
#include "trained_model.h"

#include <boost/make_shared.hpp>

#include <optional>
#include <utility>

namespace sample_projects {
namespace {

using corvath::math::metamodel::LinearRegression;
using corvath::math::metamodel::LinearRegressionSettings;
using corvath::math::transform::TransformType;

constexpr double kTolerance = 0.002;

struct Candidate {
  boost::shared_ptr<LinearRegression> model;
  double cop;
};

/// Nothing when the points do not suffice for the terms.
std::optional<Candidate> Fit(const TrainingData& data, const LinearRegressionSettings& settings) {
  const auto model = boost::make_shared<LinearRegression>(data.points, data.values);
  model->Initialize(settings);
  if (!model->BuildOptimal(data.groups)) return std::nullopt;
  return Candidate{model, data.Determination(model->ApproximateCrossValidation(data.groups))};
}

LinearRegressionSettings MakeSettings(const TrainingData& data, std::uint64_t order,
                                      bool interactions, bool box_cox) {
  LinearRegressionSettings settings(static_cast<std::uint64_t>(data.points.cols()));
  settings.SetOrder(order);
  if (order > 1 && !interactions) settings.SetInteractionSelection({});
  if (box_cox) settings.SetValueTransform(TransformType::kBoxCox);
  return settings;
}

LinearRegressionSettings Without(LinearRegressionSettings settings, std::size_t input) {
  auto bits = settings.GetVariableSelection();
  bits[input] = false;
  settings.SetVariableSelection(bits);
  return settings;
}

Candidate BestForm(const TrainingData& data) {
  std::optional<Candidate> best;
  for (const bool box_cox : {false, true})
    for (const auto& [order, interactions] :
         {std::pair<std::uint64_t, bool>{1, false}, {2, false}, {2, true}}) {
      const auto candidate = Fit(data, MakeSettings(data, order, interactions, box_cox));
      if (candidate && (!best || candidate->cop > best->cop + kTolerance)) best = candidate;
    }
  return *best;  // a plane through the points can always be fitted
}

/// Leaves out the least important input as long as that costs less than the tolerance.
void DropInputs(const TrainingData& data, Candidate& best) {
  const double least = best.cop - kTolerance;
  for (;;) {
    std::optional<Candidate> next;
    const auto bits = best.model->GetVariableSelection();
    for (std::size_t i = 0; i < bits.size(); ++i) {
      if (!bits[i]) continue;
      const auto candidate = Fit(data, Without(best.model->GetSettingsBase(), i));
      if (candidate && (!next || candidate->cop > next->cop)) next = candidate;
    }
    if (!next || next->cop < least) return;
    best = *next;
  }
}

}  // namespace

TrainedModel TrainPolynomial(const TrainingData& data) {
  Candidate best = BestForm(data);
  DropInputs(data, best);

  TrainedModel trained;
  trained.model = best.model;
  trained.subspace = best.model->GetVariableSelection();
  trained.cop = best.cop;
  trained.cod = data.Determination(best.model->ApproximateSupportPoints());
  const auto n = static_cast<double>(data.values.size());
  const auto p = static_cast<double>(best.model->GetNumberCoefficients());
  trained.cod_adjusted = 1.0 - (n - 1.0) / (n - p) * (1.0 - trained.cod);
  trained.single_cops = Eigen::VectorXd::Zero(data.points.cols());
  for (std::size_t i = 0; i < trained.subspace.size(); ++i)
    if (trained.subspace[i])
      trained.single_cops(static_cast<Eigen::Index>(i)) =
          best.cop - Fit(data, Without(best.model->GetSettingsBase(), i))->cop;
  best.model->BuildErrors(data.groups);
  best.model->SetSingleCoPs(trained.single_cops);
  return trained;
}

}  // namespace sample_projects
