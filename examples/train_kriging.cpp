#include "metamodel/ordinary_kriging.h"
#include "metamodel/ordinary_kriging_settings.h"
#include "trained_model.h"

#include <boost/make_shared.hpp>

#include <cmath>
#include <limits>

namespace examples {
namespace {

using corvath::math::metamodel::KernelType;
using corvath::math::metamodel::OrdinaryKriging;
using corvath::math::metamodel::OrdinaryKrigingSettings;

/// A model with its negative log likelihood, by which the best is looked for.
class Search {
 public:
  Search(const TrainingData& data, KernelType kernel)
      : model_(boost::make_shared<OrdinaryKriging>(data.points, data.values)),
        settings_(static_cast<std::uint64_t>(data.points.cols())) {
    settings_.SetKernelType(kernel);
  }

  /// Tries radii, in units of the inputs' ranges. @return whether they are the best so far
  bool Try(const Eigen::VectorXd& radii, double nugget) {
    settings_.SetKernelParameter(radii);
    settings_.SetNugget(nugget);
    model_->Initialize(settings_);
    if (!model_->Build() || !(model_->GetLikelihood() < likelihood_)) return false;
    likelihood_ = model_->GetLikelihood();
    radii_ = radii;
    nugget_ = nugget;
    return true;
  }

  const Eigen::VectorXd& GetRadii() const { return radii_; }
  double GetNugget() const { return nugget_; }

  boost::shared_ptr<OrdinaryKriging> BuildBest() {
    settings_.SetKernelParameter(radii_);
    settings_.SetNugget(nugget_);
    model_->Initialize(settings_);
    model_->Build();
    return model_;
  }

 private:
  boost::shared_ptr<OrdinaryKriging> model_;
  OrdinaryKrigingSettings settings_;
  double likelihood_ = std::numeric_limits<double>::max();
  Eigen::VectorXd radii_;
  double nugget_ = 0.0;
};

/// All inputs with the same radius, over a logarithmic grid.
void ScanRadius(Search& search, Eigen::Index num_radii) {
  for (const double nugget : {1e-6, 1e-5, 1e-4, 1e-3})
    for (double radius = 0.5; radius < 60.0; radius *= 1.15)
      search.Try(Eigen::VectorXd::Constant(num_radii, radius), nugget);
}

/// Moves one radius at a time as long as that helps, in ever smaller steps.
void DescendAlongAxes(Search& search) {
  for (double step = 2.0; step > 1.02; step = std::sqrt(step))
    for (bool moved = true; moved;) {
      moved = false;
      for (Eigen::Index i = 0; i < search.GetRadii().size(); ++i)
        for (const double factor : {step, 1.0 / step}) {
          Eigen::VectorXd radii = search.GetRadii();
          radii(i) *= factor;
          if (radii(i) < 200.0 && search.Try(radii, search.GetNugget())) moved = true;
        }
    }
}

}  // namespace

TrainedModel TrainKriging(const TrainingData& data, bool anisotropic) {
  Search search(data, anisotropic ? KernelType::kConstInflExp : KernelType::kConstInflIsoExp);
  ScanRadius(search, anisotropic ? data.points.cols() : 1);
  if (anisotropic) DescendAlongAxes(search);
  const auto model = search.BuildBest();
  model->BuildErrors(data.groups);
  TrainedModel trained;
  trained.model = model;
  trained.subspace = model->GetVariableSelection();
  trained.cop = data.Determination(model->ApproximateCrossValidation(data.groups));
  trained.cod = data.Determination(model->ApproximateSupportPoints());
  trained.cod_adjusted = trained.cod;  // an interpolation has no count of coefficients
  // With one radius per input an input leaves with its radius, and the others stay.
  if (!anisotropic) trained.single_cops = model->ComputeSingleCoPs(data.groups);
  model->SetSingleCoPs(trained.single_cops);
  return trained;
}

}  // namespace examples
