#include "training/model_competition.h"

#include "metamodel/linear_regression.h"
#include "metamodel/linear_regression_settings.h"
#include "training/training_table.h"

#include <boost/make_shared.hpp>

#include <array>
#include <limits>

namespace corvath::training {
namespace {

using math::metamodel::LinearRegression;
using math::metamodel::LinearRegressionSettings;
using math::metamodel::ModelType;
using math::metamodel::SubspaceResults;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double Adjusted(double determination, Eigen::Index n, std::uint64_t num_coefficients) {
  const double spare = static_cast<double>(n) - static_cast<double>(num_coefficients);
  if (!(spare > 0.0)) return kNaN;
  return 1.0 - (static_cast<double>(n) - 1.0) / spare * (1.0 - determination);
}

SubspaceResults Judge(const LinearRegression& model, const ResponseData& data) {
  SubspaceResults results;
  results.settings.reset(model.GetSettingsBase().Clone());
  const Eigen::VectorXd predicted = model.ApproximateCrossValidation(data.groups);
  const std::uint64_t num = model.GetNumberCoefficients();
  results.CoP = Determination(data.values, predicted);
  results.CoPadj = Adjusted(results.CoP, data.values.size(), num);
  results.CoD = Determination(data.values, model.ApproximateSupportPoints());
  results.CoDadj = Adjusted(results.CoD, data.values.size(), num);
  results.CoDtest = kNaN;
  results.predError = (data.values - predicted).norm() / std::sqrt(double(data.values.size()));
  return results;
}

}  // namespace

ChosenModel RunCompetition(const ResponseData& data, const TrainSettings& settings,
                           const CompetitionObserver& observer) {
  ChosenModel chosen;
  std::uint64_t done = 0;
  for (const auto& [order, interactions] :
       {std::pair<std::uint64_t, bool>{1, false}, {2, false}, {2, true}}) {
    if (order > settings.models.max_order_polynomial_) continue;
    LinearRegressionSettings form(static_cast<std::uint64_t>(data.points.cols()));
    form.SetOrder(order);
    if (!interactions) form.SetInteractionSelection({});
    observer(L"Linear Regression | " + std::to_wstring(order), done++, 3);
    const auto model = boost::make_shared<LinearRegression>(data.points, data.values, form);
    if (!model->IsSolvable() || !model->Build()) continue;
    SubspaceResults results = Judge(*model, data);
    chosen.tried.push_back(results);
    if (chosen.model && !(results.CoP > chosen.results.CoP + settings.models.toleranceCoP_model_))
      continue;
    chosen.model = model;
    chosen.text = model->GetName(false);
    chosen.results = std::move(results);
  }
  if (!chosen.model) throw TrainingError(L"There are too few designs for any model.");
  const auto without = [&](std::size_t j) {
    LinearRegressionSettings form =
        dynamic_cast<const LinearRegressionSettings&>(*chosen.results.settings);
    auto bits = form.GetVariableSelection();
    bits[j] = false;
    form.SetVariableSelection(bits);
    LinearRegression model(data.points, data.values, form);
    model.Build();
    return Determination(data.values, model.ApproximateCrossValidation(data.groups));
  };
  chosen.results.singleCoPs.resize(data.points.cols());
  for (Eigen::Index j = 0; j < data.points.cols(); ++j)
    chosen.results.singleCoPs(j) = chosen.results.CoP - without(static_cast<std::size_t>(j));
  chosen.model->BuildErrors(data.groups);
  chosen.model->SetSingleCoPs(chosen.results.singleCoPs);
  return chosen;
}

ChosenModel MakeConstantModel(const ResponseData& data) {
  ChosenModel chosen;
  LinearRegressionSettings form(static_cast<std::uint64_t>(data.points.cols()));
  form.SetVariableSelection(
      math::metamodel::BitVector(static_cast<std::size_t>(data.points.cols()), false));
  chosen.model = boost::make_shared<LinearRegression>(data.points, data.values, form);
  chosen.model->Build();
  chosen.model->BuildErrors(data.groups);
  chosen.text = L"constant";
  chosen.results.settings.reset(form.Clone());
  chosen.results.CoP = chosen.results.CoPadj = 1.0;
  chosen.results.CoD = chosen.results.CoDadj = 1.0;
  chosen.results.CoDtest = kNaN;
  chosen.results.singleCoPs = Eigen::VectorXd::Zero(data.points.cols());
  chosen.model->SetSingleCoPs(chosen.results.singleCoPs);
  chosen.tried.push_back(chosen.results);
  return chosen;
}

}  // namespace corvath::training
