#include "metamodel/thin_plate_splines.h"
#include "trained_model.h"

#include <boost/make_shared.hpp>

#include <vector>

namespace sample_projects {
namespace {

using corvath::math::metamodel::SurrogateTPS;

/// Rows of the points in a group, and of those in all other groups.
struct Split {
  std::vector<Eigen::Index> inside, outside;
};

Split SplitBy(const TrainingData& data, std::uint64_t group) {
  Split split;
  for (Eigen::Index i = 0; i < data.groups.size(); ++i)
    (data.groups(i) == group ? split.inside : split.outside).push_back(i);
  return split;
}

}  // namespace

TrainedModel TrainThinPlateSplines(const TrainingData& data) {
  TrainedModel trained;
  const auto model = boost::make_shared<SurrogateTPS>(data.points, data.values);
  model->Build();
  trained.model = model;
  trained.subspace.assign(static_cast<std::size_t>(data.points.cols()), true);
  Eigen::VectorXd predictions(data.values.size());
  for (std::uint64_t group = 0; group <= data.groups.maxCoeff(); ++group) {
    const Split split = SplitBy(data, group);
    SurrogateTPS without(data.points(split.outside, Eigen::all), data.values(split.outside));
    without.Build();
    predictions(split.inside) = without.Approximate(data.points(split.inside, Eigen::all));
  }
  trained.cop = data.Determination(predictions);
  trained.cod = data.Determination(model->ApproximateSupportPoints());
  trained.cod_adjusted = trained.cod;
  return trained;
}

}  // namespace sample_projects
