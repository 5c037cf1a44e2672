#include "trained_model.h"

#include "metamodel/thin_plate_splines.h"
#include "training/competition.h"

#include <boost/make_shared.hpp>

#include <stdexcept>

namespace sample_projects {

using corvath::math::metamodel::SurrogateTPS;
using namespace corvath::training;

namespace {

constexpr double kBudget = 2e10;  // operations for each response: seconds

}  // namespace

TrainedModel TrainForms(const std::vector<CandidateForm>& forms, const ResponseData& data) {
  const TrainSettings settings;
  const CompetitionObserver observer = [](const std::wstring&, double) {};
  Competition competition(data, settings, forms, kBudget, observer);
  const Candidate* best = nullptr;
  for (const Finalist& finalist : competition.Run())
    if (!IsSameForm(finalist.candidate->form, kConstantForm) &&
        (!best || finalist.candidate->results.CoP > best->results.CoP))
      best = finalist.candidate;
  if (!best) throw std::runtime_error("none of the forms can be fitted");
  const CandidateTrials& trials = competition.GetTrials();
  TrainedModel trained{trials.Build(*best), best->subspace, best->results};
  trained.results.singleCoPs = trials.ComputeSingleCoPs(*best, *trained.model);
  trained.model->SetSingleCoPs(trained.results.singleCoPs);
  trained.model->SetErrors(data.values - best->predicted, data.groups);
  return trained;
}

TrainedModel TrainPolynomial(const ResponseData& data) {
  ModelChoice choice;
  choice.moving_least_squares = choice.isotropic_kriging = choice.anisotropic_kriging = false;
  std::vector<CandidateForm> forms;
  for (const CandidateForm& form : AllowedForms(choice))
    if (!form.ridge) forms.push_back(form);  // a penalty would move what is exactly linear
  return TrainForms(forms, data);
}

TrainedModel TrainThinPlateSplines(const ResponseData& data) {
  const auto model = boost::make_shared<SurrogateTPS>(data.points, data.values);
  model->Build();
  Eigen::VectorXd predicted(data.values.size());
  for (std::uint64_t group = 0; group <= data.groups.maxCoeff(); ++group) {
    std::vector<Eigen::Index> inside, outside;
    for (Eigen::Index i = 0; i < data.groups.size(); ++i)
      (data.groups(i) == group ? inside : outside).push_back(i);
    SurrogateTPS without(data.points(outside, Eigen::all), data.values(outside));
    without.Build();
    predicted(inside) = without.Approximate(data.points(inside, Eigen::all));
  }
  TrainedModel trained{model, {}, {}};
  trained.subspace.assign(static_cast<std::size_t>(data.points.cols()), true);
  trained.results.CoP = Determination(data.values, predicted);
  trained.results.CoD = Determination(data.values, model->ApproximateSupportPoints());
  trained.results.CoDadj = trained.results.CoD;  // an interpolation has no count of coefficients
  return trained;
}

}  // namespace sample_projects
