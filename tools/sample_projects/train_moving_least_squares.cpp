#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/moving_least_squares/moving_least_squares_settings.h"
#include "trained_model.h"

#include <boost/make_shared.hpp>

namespace sample_projects {

using corvath::math::metamodel::MovingLeastSquares;
using corvath::math::metamodel::MovingLeastSquaresSettings;

TrainedModel TrainMovingLeastSquares(const TrainingData& data) {
  TrainedModel trained;
  boost::shared_ptr<MovingLeastSquares> best;
  for (const std::uint64_t order : {1u, 2u}) {
    MovingLeastSquaresSettings settings(static_cast<std::uint64_t>(data.points.cols()));
    settings.SetOrder(order);
    const auto model = boost::make_shared<MovingLeastSquares>(data.points, data.values);
    model->Initialize(settings);
    if (!model->BuildOptimal(data.groups)) continue;
    const double cop = data.Determination(model->ApproximateCrossValidation(data.groups));
    if (best && !(cop > trained.cop)) continue;
    best = model;
    trained.cop = cop;
  }
  best->BuildErrors(data.groups);
  trained.model = best;
  trained.subspace = best->GetVariableSelection();
  trained.cod = data.Determination(best->ApproximateSupportPoints());
  const auto n = static_cast<double>(data.values.size());
  const auto p = static_cast<double>(best->GetNumberCoefficients());
  trained.cod_adjusted = 1.0 - (n - 1.0) / (n - p) * (1.0 - trained.cod);
  trained.single_cops = best->ComputeSingleCoPs(data.groups);
  best->SetSingleCoPs(trained.single_cops);
  return trained;
}

}  // namespace sample_projects
