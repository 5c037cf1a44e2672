#include "training/competition.h"

#include "training/form_choice.h"
#include "training/forward_selection.h"
#include "training/subspace_filters.h"
#include "training/training_table.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;
using math::metamodel::SurrogateBase;

/// Rounds in which the leaders propose further subspaces.
constexpr int kMostRounds = 3;
/// Share of the work that counts for the subspaces of the filters.
constexpr double kFirstRound = 0.7;
/// Squared errors up to this many times those of the best count as the same. Not more: inputs that
/// were spared for less cost more at new designs than the penalty of a ridge that keeps them.
constexpr double kSameErrors = 1.01;
/// An input is spared whose single CoP is below this share of what the model leaves unexplained.
constexpr double kSpared = 0.1;

}  // namespace

Competition::Competition(const ResponseData& data, const TrainSettings& settings,
                         std::vector<CandidateForm> forms, double budget,
                         const CompetitionObserver& observer)
    : data_(data),
      settings_(settings),
      forms_(std::move(forms)),
      trials_(data, settings, forms_, budget, observer) {
  forms_.insert(forms_.begin(), kConstantForm);
}

Finalists Competition::Run() {
  trials_.Try(ProposeSubspaces(data_, settings_.filters), 0.0, kFirstRound);
  for (int round = 0; round < kMostRounds; ++round) {
    const std::vector<BitVector> subspaces = ProposeByLeaders();
    if (subspaces.empty()) break;
    const double width = (1.0 - kFirstRound) / kMostRounds;
    trials_.Try(subspaces, kFirstRound + width * round, width);
  }
  Finalists finalists;
  for (const bool needs_sound : {true, false}) {
    for (const CandidateForm& form : forms_) {
      const std::size_t best = BestOf(form, needs_sound);
      if (best != kNone) finalists.push_back({&At(best)});
    }
    for (const CandidateForm& form : forms_) {
      if (!Shrinks(form) || form.box_cox) continue;
      const std::size_t whole = WholeOf(form, needs_sound);
      if (whole != kNone) finalists.push_back({&At(whole), /*is_whole=*/true});
    }
    if (!finalists.empty()) return finalists;
  }
  throw TrainingError(L"None of the allowed models can be built from these designs.");
}

bool Competition::IsSoundAt(std::size_t position) {
  const auto known = is_sound_.find(position);
  if (known != is_sound_.end()) return known->second;
  const Candidate& candidate = At(position);
  const bool sound = IsSound(*trials_.Build(candidate), trials_.GetProbes().Of(candidate.subspace));
  is_sound_[position] = sound;
  return sound;
}

/// The position of the sound candidate of those that `admits` whose `rank` is smallest, the first
/// of equals; kNone without one.
template <class Admits, class Rank>
std::size_t Competition::First(const Admits& admits, const Rank& rank, bool needs_sound) {
  std::vector<std::size_t> admitted;
  for (std::size_t i = 0; i < trials_.GetCandidates().size(); ++i)
    if (admits(At(i))) admitted.push_back(i);
  std::stable_sort(admitted.begin(), admitted.end(),
                   [&](std::size_t a, std::size_t b) { return rank(At(a)) < rank(At(b)); });
  for (const std::size_t position : admitted)
    if (!needs_sound || IsSoundAt(position)) return position;
  return kNone;
}

std::size_t Competition::BestOf(const CandidateForm& form, bool needs_sound) {
  const std::size_t leader =
      First([&](const Candidate& candidate) { return IsSameForm(candidate.form, form); },
            [&](const Candidate& candidate) { return -ScoreOf(candidate); }, needs_sound);
  if (leader == kNone) return kNone;
  const double least = SquaredErrors(data_.values, At(leader).predicted).sum();
  return First(
      [&](const Candidate& candidate) {
        return IsSameForm(candidate.form, form) &&
               candidate.GetNumberInputs() <= At(leader).GetNumberInputs() &&
               SquaredErrors(data_.values, candidate.predicted).sum() <= kSameErrors * least;
      },
      [&](const Candidate& candidate) {
        return std::make_pair(candidate.GetNumberInputs(), -ScoreOf(candidate));
      },
      needs_sound);
}

std::size_t Competition::WholeOf(const CandidateForm& form, bool needs_sound) {
  const auto is_whole = [&](const BitVector& subspace) {
    for (std::size_t j = 0; j < subspace.size(); ++j)
      if (!subspace[j] && data_.num_levels[j] > 1) return false;
    return true;
  };
  return First(
      [&](const Candidate& candidate) {
        return IsSameForm(candidate.form, form) && is_whole(candidate.subspace);
      },
      [&](const Candidate& candidate) { return -ScoreOf(candidate); }, needs_sound);
}

/// New subspaces around that of the best model of each family: without the inputs that it can
/// spare, and with the one that tells most about what it leaves unexplained.
std::vector<BitVector> Competition::ProposeByLeaders() {
  std::vector<BitVector> proposed;
  for (const Family family : {Family::kRegression, Family::kMovingLeastSquares,
                              Family::kIsotropicKriging, Family::kAnisotropicKriging}) {
    const std::size_t leader =
        First([&](const Candidate& candidate) { return candidate.form.family == family; },
              [&](const Candidate& candidate) { return -ScoreOf(candidate); }, true);
    if (leader == kNone || !heard_.insert(leader).second) continue;
    trials_.Observe(L"Importance of the inputs");
    const auto model = trials_.Build(At(leader));
    for (const auto& subspaces : {Without(At(leader), *model), With(At(leader))})
      for (const BitVector& subspace : subspaces)
        if (math::metamodel::CountBits(subspace) > 0 && !trials_.WasTried(subspace) &&
            std::find(proposed.begin(), proposed.end(), subspace) == proposed.end())
          proposed.push_back(subspace);
  }
  return proposed;
}

/// The subspace of a model without the inputs of small single CoPs.
std::vector<BitVector> Competition::Without(const Candidate& leader,
                                            const SurrogateBase& model) const {
  if (leader.GetNumberInputs() < 2) return {};
  Eigen::VectorXd single = trials_.ComputeSingleCoPs(leader, model);
  for (const std::uint64_t input : settings_.filters.always)
    if (input < leader.subspace.size())
      single(static_cast<Eigen::Index>(input)) = std::numeric_limits<double>::infinity();
  const double unexplained = 1.0 - leader.results.CoP;
  std::vector<BitVector> subspaces;
  for (const double limit : {0.0, std::min(settings_.filters.spared_cop, kSpared * unexplained)}) {
    subspaces.push_back(leader.subspace);
    for (std::size_t j = 0; j < leader.subspace.size(); ++j)
      if (single(static_cast<Eigen::Index>(j)) <= limit) subspaces.back()[j] = false;
  }
  return subspaces;
}

/// The subspace of a model and the input that explains most of its cross-validated residuals, if
/// that is significant among so many inputs.
std::vector<BitVector> Competition::With(const Candidate& leader) const {
  const auto num_others = leader.subspace.size() - leader.GetNumberInputs();
  if (num_others == 0) return {};
  const Eigen::VectorXd residuals = data_.values - leader.predicted;
  const Eigen::VectorXd significances =
      SignificancesOfInputs(data_.points, residuals, leader.subspace);
  Eigen::Index best = 0;
  const double chance = (1.0 - significances.maxCoeff(&best)) * static_cast<double>(num_others);
  if (chance > 1.0 - settings_.filters.min_significance) return {};
  BitVector subspace = leader.subspace;
  subspace[static_cast<std::size_t>(best)] = true;
  return {subspace};
}

}  // namespace corvath::training
