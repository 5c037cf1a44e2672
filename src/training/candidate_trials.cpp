#include "training/candidate_trials.h"

#include "metamodel/quadratic_box_cox.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <utility>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;
using math::metamodel::SurrogateBase;

constexpr Family kFamilies[] = {Family::kRegression, Family::kMovingLeastSquares,
                                Family::kIsotropicKriging, Family::kAnisotropicKriging};

/// Operations of one family: half a minute, or a whole one on a slow machine.
constexpr double kBudget = 2e11;
/// Subspaces that a family is tried over whatever that costs.
constexpr std::size_t kFewestSubspaces = 2;

/// Of one fit, from the loops that dominate: the products of all terms under the weights of each
/// point for two predictions and 21 radii, or some 60 factorisations.
double CostOf(Family family, Eigen::Index num_points, std::uint64_t num_coefficients) {
  constexpr double kOverhead = 1e6;
  const auto n = static_cast<double>(num_points);
  const auto p = static_cast<double>(num_coefficients);
  switch (family) {
    case Family::kRegression:
      return kOverhead + 40.0 * n * p * p;
    case Family::kMovingLeastSquares:
      return kOverhead + 42.0 * n * n * p * (p + 3.0);
    case Family::kIsotropicKriging:
      return kOverhead + 20.0 * n * n * n;
    case Family::kAnisotropicKriging:
      return kOverhead + 300.0 * n * n * n;
  }
  return kOverhead;
}

bool IsTooLarge(Family family, Eigen::Index num_points) {
  switch (family) {
    case Family::kRegression:
      return false;
    case Family::kMovingLeastSquares:
      return num_points > CandidateTrials::kMostLocal;
    case Family::kIsotropicKriging:
    case Family::kAnisotropicKriging:
      return num_points > CandidateTrials::kMostKriging;
  }
  return false;
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

boost::shared_ptr<SurrogateBase> CandidateTrials::Build(const Candidate& candidate) const {
  auto model = MakeModel(*candidate.results.settings, data_.points, data_.values);
  model->Build();
  return model;
}

void CandidateTrials::Try(const std::vector<BitVector>& subspaces, double begin, double width) {
  double total = 0.0;  // the costly families may get other subspaces, of much the same cost
  for (const Family family : kFamilies)
    for (const Trial& trial : Plan(family, subspaces)) total += trial.cost;
  double done = 0.0;
  for (const Family family : kFamilies) {
    const bool is_cheap = family == Family::kRegression;
    for (const Trial& trial : Plan(family, is_cheap ? subspaces : MostPromisingFirst(subspaces))) {
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
std::vector<CandidateTrials::Trial> CandidateTrials::Plan(
    Family family, const std::vector<BitVector>& subspaces) const {
  std::vector<Trial> trials;
  const Eigen::Index n = data_.values.size();
  if (IsTooLarge(family, n)) return trials;
  const auto known = spent_.find(family);
  double spent = known == spent_.end() ? 0.0 : known->second;
  const std::size_t num_fewest = spent > 0.0 ? 0 : kFewestSubspaces;
  for (std::size_t k = 0; k < subspaces.size(); ++k) {
    const std::size_t num_before = trials.size();
    double cost = 0.0;
    for (const CandidateForm& form : forms_) {
      if (form.family != family) continue;
      if (form.interactions && math::metamodel::CountBits(subspaces[k]) < 2) continue;  // has none
      auto settings = MakeSettings(form, subspaces[k], data_, settings_);
      if (!IsAffordable(*settings, family, n, settings_)) continue;
      trials.push_back(
          {form, subspaces[k], settings, CostOf(family, n, settings->GetNumberCoefficients())});
      cost += trials.back().cost;
    }
    spent += cost;
    if (family == Family::kRegression || spent <= kBudget || k < num_fewest) continue;
    trials.resize(num_before);
    break;
  }
  return trials;
}

/// By the best score that a candidate over each has so far.
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
  std::stable_sort(sorted.begin(), sorted.end(), [&](const BitVector& a, const BitVector& b) {
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
    const auto model = MakeModel(*trial.settings, data_.points, data_.values);
    model->SetInterruptionPoint([this] { Observe(); });
    if (form.box_cox && form.family != Family::kRegression && IsNeutral(trial.subspace, *model))
      return;
    if (!model->IsSolvable() || !model->BuildOptimal(data_.groups)) return;
    if (form.box_cox && !model->GetSettingsBase().HasBoxCoxParameter()) return;
    if (form.family == Family::kMovingLeastSquares) CloseHoles(*model, probes_.Of(trial.subspace));
    Candidate candidate{form, trial.subspace, Judge(*model, form.family, data_)};
    if (std::isfinite(GetScore(candidate))) candidates_.push_back(std::move(candidate));
  } catch (const std::exception&) {
    if (is_ended_) throw;  // by the observer; a candidate that fails is none
  }
}

/// Whether no transform suits a quadratic regression, from which other models take theirs. It costs
/// little beside their fits, and depends on the inputs alone.
bool CandidateTrials::IsNeutral(const BitVector& subspace, const SurrogateBase& model) {
  const auto known = is_neutral_.find(subspace);
  if (known != is_neutral_.end()) return known->second;
  constexpr double kSameLambda = 1e-10;
  const auto choice = math::metamodel::FitQuadraticBoxCox(model, [this] { Observe(); });
  const bool neutral =
      choice.parameters.empty() || std::abs(choice.parameters[0] - 1.0) <= kSameLambda;
  is_neutral_[subspace] = neutral;
  return neutral;
}

}  // namespace corvath::training
