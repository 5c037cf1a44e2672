#include "training/candidate_trials.h"

#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/quadratic_box_cox.h"
#include "training/spread_rows.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <new>
#include <utility>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;
using math::metamodel::SurrogateBase;

/// Rows from which kriging chooses its parameters: more cost time, and change little.
constexpr Eigen::Index kMostFitRows = 300;
/// Subspaces of a costly family at most, in each round.
constexpr std::size_t kMostSubspaces = 3;
/// Terms that a ridge regression can bear: numbers of terms, and of its smaller matrix.
constexpr std::uint64_t kMostTerms = 6000;
constexpr double kMostRidge = 300.0;

/// Of one fit, from the loops that dominate: 42 transforms of a regression; decompositions and
/// groups of a ridge; the products of all terms under the weights of each point for two predictions
/// and 21 radii; 30 or 45 likelihoods with their gradients.
double CostOf(const CandidateForm& form, double n, double p, double num_fit_rows) {
  constexpr double kOverhead = 1e5;
  const double k = std::min(n, p);
  const double cube = num_fit_rows * num_fit_rows * num_fit_rows;
  switch (form.family) {
    case Family::kRegression:
      if (form.ridge) return kOverhead + 4.0 * n * p * k + 40.0 * k * k * k + 2.0 * n * n * k;
      return kOverhead + 20.0 * n * p * p;
    case Family::kMovingLeastSquares:
      return kOverhead + 42.0 * n * n * p * (p + 3.0);
    case Family::kIsotropicKriging:
      return kOverhead + 90.0 * cube + 3.0 * n * n * n;
    case Family::kAnisotropicKriging:
      return kOverhead + 140.0 * cube + 3.0 * n * n * n;
  }
  return kOverhead;
}

std::wstring TextOf(const CandidateForm& form, const BitVector& subspace) {
  const std::uint64_t num_inputs = math::metamodel::CountBits(subspace);
  return Describe(form) + L", " + std::to_wstring(num_inputs) +
         (num_inputs == 1 ? L" input" : L" inputs");
}

}  // namespace

bool CandidateTrials::WasTried(const BitVector& subspace) const {
  return std::find(tried_.begin(), tried_.end(), subspace) != tried_.end();
}

CandidateTrials::CandidateTrials(const ResponseData& data, const TrainSettings& settings,
                                 std::vector<CandidateForm> forms, double budget,
                                 const CompetitionObserver& observer)
    : data_(data),
      settings_(settings),
      observer_(observer),
      forms_(std::move(forms)),
      probes_(data.points),
      budget_(budget),
      fit_rows_(SpreadRows(data.points, kMostFitRows)) {}

boost::shared_ptr<SurrogateBase> CandidateTrials::Build(const Candidate& candidate) const {
  auto model = MakeModel(*candidate.results.settings, data_.points, data_.values);
  if (candidate.form.ridge)
    dynamic_cast<math::metamodel::LinearRegression&>(*model).BuildRidge(candidate.penalty);
  else
    model->Build();
  return model;
}

Eigen::VectorXd CandidateTrials::ComputeSingleCoPs(const Candidate& candidate,
                                                   const SurrogateBase& model) const {
  constexpr Eigen::Index kMost = 600;
  const auto* penalty = candidate.form.ridge ? &candidate.penalty : nullptr;
  if (candidate.form.family == Family::kRegression || data_.values.size() <= kMost)
    return training::ComputeSingleCoPs(model, data_, penalty);
  const ResponseData some = RowsOf(data_, SpreadRows(data_.points, kMost));
  const auto smaller = MakeModel(*candidate.results.settings, some.points, some.values);
  smaller->Build();
  return training::ComputeSingleCoPs(*smaller, some, penalty);
}

CandidateTrials::Costs CandidateTrials::CostsOf(const CandidateForm& form) {
  switch (form.family) {
    case Family::kRegression:
      return form.ridge ? Costs::kRidge : Costs::kRegression;
    case Family::kMovingLeastSquares:
      return Costs::kMovingLeastSquares;
    case Family::kIsotropicKriging:
      return Costs::kIsotropic;
    case Family::kAnisotropicKriging:
      return Costs::kAnisotropic;
  }
  return Costs::kRegression;
}

std::wstring CandidateTrials::NameOf(Costs family) {
  switch (family) {
    case Costs::kRegression:
      return L"linear regression";
    case Costs::kRidge:
      return L"ridge regression";
    case Costs::kMovingLeastSquares:
      return L"moving least squares";
    case Costs::kIsotropic:
      return L"isotropic kriging";
    case Costs::kAnisotropic:
      return L"anisotropic kriging";
  }
  return {};
}

std::wstring CandidateTrials::GetLimits() const {
  std::wstring names;
  for (const auto& [family, name] : limited_) names += (names.empty() ? L"" : L", ") + name;
  if (names.empty()) return {};
  return L"the budget did not suffice to try over all subsets of inputs that were proposed: " +
         names + L".";
}

void CandidateTrials::Try(const std::vector<BitVector>& subspaces, double begin, double width) {
  constexpr Costs kAll[] = {Costs::kRegression, Costs::kRidge, Costs::kMovingLeastSquares,
                            Costs::kIsotropic, Costs::kAnisotropic};
  if (candidates_.empty()) {
    const BitVector none(data_.num_levels.size(), false);
    Fit({kConstantForm, none, MakeSettings(kConstantForm, none, data_, settings_.models), 0.0});
  }
  double total = 0.0;  // the costly families may get other subspaces, of much the same cost
  bool is_limited = false;
  for (const Costs family : kAll)
    for (const Trial& trial : Plan(family, subspaces, is_limited)) total += trial.cost;
  double done = 0.0;
  for (const Costs family : kAll) {
    const bool is_cheap = family == Costs::kRegression;
    is_limited = false;
    const auto trials =
        Plan(family, is_cheap ? subspaces : MostPromisingFirst(subspaces), is_limited);
    if (is_limited) limited_[family] = NameOf(family);
    for (const Trial& trial : trials) {
      text_ = TextOf(trial.form, trial.subspace);
      share_ = begin + width * std::min(1.0, done / total);
      Observe();
      Fit(trial);
      done += trial.cost;
      spent_[family] += trial.cost;
    }
  }
  tried_.insert(tried_.end(), subspaces.begin(), subspaces.end());
}

/// The forms of a family over the first of `subspaces`, as many as the budget allows.
std::vector<CandidateTrials::Trial> CandidateTrials::Plan(Costs family,
                                                          const std::vector<BitVector>& subspaces,
                                                          bool& is_limited) const {
  constexpr double kShare = 0.3;  // of the budget, for one family
  constexpr double kFirst = 0.6;  // of that, until the leaders have proposed subspaces
  const double limit = kShare * budget_ * (tried_.empty() ? kFirst : 1.0);
  std::vector<Trial> trials;
  const auto n = static_cast<double>(data_.values.size());
  const auto known = spent_.find(family);
  double spent = known == spent_.end() ? 0.0 : known->second;
  const std::size_t num_most = family == Costs::kRegression ? subspaces.size() : kMostSubspaces;
  for (std::size_t k = 0; k < std::min(num_most, subspaces.size()); ++k)
    for (const CandidateForm& form : forms_) {
      if (CostsOf(form) != family) continue;
      if (form.interactions && !form.ridge && math::metamodel::CountBits(subspaces[k]) < 2)
        continue;  // has none
      auto settings = MakeSettings(form, subspaces[k], data_, settings_.models);
      const auto p = static_cast<double>(settings->GetNumberCoefficients());
      if (form.ridge) {
        if (settings->GetNumberCoefficients() > kMostTerms || std::min(n, p) > kMostRidge) continue;
      } else if (!IsAffordable(*settings, form.family, data_.values.size(), settings_.models)) {
        continue;
      }
      const double cost = CostOf(form, n, p, static_cast<double>(fit_rows_.size()));
      if (spent > 0.0 && spent + cost > limit) {
        is_limited = true;
        return trials;
      }
      spent += cost;
      trials.push_back({form, subspaces[k], settings, cost});
    }
  return trials;
}

/// The first, and the others by the best score that a candidate over each has so far.
std::vector<BitVector> CandidateTrials::MostPromisingFirst(
    const std::vector<BitVector>& subspaces) const {
  std::map<BitVector, double> scores;
  for (const Candidate& candidate : candidates_) {
    const double score = GetScore(candidate);
    const auto known = scores.emplace(candidate.subspace, score).first;
    known->second = std::max(known->second, score);
  }
  const auto score_of = [&](const BitVector& subspace) {
    const auto known = scores.find(subspace);
    return known == scores.end() ? -std::numeric_limits<double>::infinity() : known->second;
  };
  std::vector<BitVector> sorted = subspaces;
  if (sorted.empty()) return sorted;
  std::stable_sort(sorted.begin() + 1, sorted.end(), [&](const BitVector& a, const BitVector& b) {
    return score_of(a) > score_of(b);
  });
  return sorted;
}

void CandidateTrials::Observe() {
  try {
    observer_(text_, share_);
  } catch (...) {
    is_ended_ = true;
    throw;
  }
}

void CandidateTrials::Fit(const Trial& trial) {
  const CandidateForm& form = trial.form;
  try {
    if (form.box_cox && form.family != Family::kRegression && IsNeutral(trial)) return;
    FittedForm fitted = FitForm(form, *trial.settings, data_, fit_rows_, [this] { Observe(); });
    if (!fitted.model) return;
    SurrogateBase& model = *fitted.model;
    if (form.box_cox && !model.GetSettingsBase().HasBoxCoxParameter()) return;
    if (form.family == Family::kMovingLeastSquares) {
      CloseHoles(model, probes_.Of(trial.subspace));
      fitted.predicted = model.ApproximateCrossValidation(data_.groups);
    }
    Candidate candidate{form, trial.subspace, Judge(model, form, data_, fitted.predicted),
                        fitted.penalty, std::move(fitted.predicted)};
    if (std::isfinite(GetScore(candidate))) candidates_.push_back(std::move(candidate));
  } catch (const std::bad_alloc&) {
    throw;  // what is chosen must not depend on it
  } catch (const std::exception&) {
    if (is_ended_) throw;  // by the observer; a candidate that fails is none
  }
}

/// Whether no transform suits a quadratic regression, from which other models take theirs. It costs
/// little beside their fits, and depends on the inputs alone.
bool CandidateTrials::IsNeutral(const Trial& trial) {
  const auto known = is_neutral_.find(trial.subspace);
  if (known != is_neutral_.end()) return known->second;
  constexpr double kSameLambda = 1e-10;
  const auto model = MakeModel(*trial.settings, data_.points, data_.values);
  const auto choice = math::metamodel::FitQuadraticBoxCox(*model, [this] { Observe(); });
  const bool neutral =
      choice.parameters.empty() || std::abs(choice.parameters[0] - 1.0) <= kSameLambda;
  is_neutral_[trial.subspace] = neutral;
  return neutral;
}

}  // namespace corvath::training
