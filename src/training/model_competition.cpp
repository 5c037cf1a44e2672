#include "training/model_competition.h"

#include "metamodel/linear_regression.h"
#include "metamodel/linear_regression_settings.h"
#include "training/forward_selection.h"
#include "training/subspace_filters.h"
#include "training/training_table.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;
using math::metamodel::LinearRegression;
using math::metamodel::LinearRegressionSettings;
using math::metamodel::SurrogateBase;

/// Rounds in which the leaders propose further subspaces.
constexpr int kMostRounds = 5;
/// Share of the work that counts for the subspaces of the filters.
constexpr double kFirstRound = 0.8;
/// Share of the work until the winner stands.
constexpr double kCompeted = 0.8;
/// An input is spared whose single CoP is below this share of what the model leaves unexplained.
constexpr double kSpared = 0.1;
/// Errors below this share of the response's range are rounding: a model that has them is exact.
constexpr double kExact = 1e-9;

class Competition {
 public:
  Competition(const ResponseData& data, const math::metamodel::ZELSettings& settings,
              std::vector<CandidateForm> forms, const CompetitionObserver& observer)
      : data_(data), settings_(settings), trials_(data, settings, std::move(forms), observer) {}

  /// The winner; valid as long as the competition.
  const Candidate& Run() {
    trials_.Try(ProposeSubspaces(data_, settings_), 0.0, kFirstRound);
    for (int round = 0; round < kMostRounds; ++round) {
      const std::vector<BitVector> subspaces = ProposeByLeaders();
      if (subspaces.empty()) break;
      const double width = (1.0 - kFirstRound) / kMostRounds;
      trials_.Try(subspaces, kFirstRound + width * round, width);
    }
    return Choose();
  }

  boost::shared_ptr<SurrogateBase> Build(const Candidate& candidate) const {
    return trials_.Build(candidate);
  }

  /// The model of the winner with all figures that its own fit gives.
  ChosenModel Finish(const Candidate& winner) {
    trials_.Observe(L"Importance of the inputs");
    ChosenModel chosen;
    chosen.model = trials_.Build(winner);
    chosen.text = Describe(winner.form);
    chosen.results = Judge(*chosen.model, winner.form.family, data_);
    chosen.results.singleCoPs = ComputeSingleCoPs(*chosen.model, data_);
    chosen.model->BuildErrors(data_.groups);
    chosen.model->SetSingleCoPs(chosen.results.singleCoPs);
    for (const Candidate& tried : trials_.GetCandidates()) chosen.tried.push_back(tried.results);
    return chosen;
  }

 private:
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  const Candidate& At(std::size_t position) const { return trials_.GetCandidates()[position]; }
  double ScoreOf(const Candidate& candidate) const { return trials_.GetScore(candidate); }

  bool IsSoundAt(std::size_t position) {
    const auto known = is_sound_.find(position);
    if (known != is_sound_.end()) return known->second;
    const Candidate& candidate = At(position);
    const bool sound =
        IsSound(*trials_.Build(candidate), trials_.GetProbes().Of(candidate.subspace));
    is_sound_[position] = sound;
    return sound;
  }

  /// The position of the sound candidate of those that `admits` whose `rank` is smallest, the first
  /// of equals; kNone without one.
  template <class Admits, class Rank>
  std::size_t First(const Admits& admits, const Rank& rank) {
    std::vector<std::size_t> admitted;
    for (std::size_t i = 0; i < trials_.GetCandidates().size(); ++i)
      if (admits(At(i))) admitted.push_back(i);
    std::stable_sort(admitted.begin(), admitted.end(),
                     [&](std::size_t a, std::size_t b) { return rank(At(a)) < rank(At(b)); });
    for (const std::size_t position : admitted)
      if (!needs_sound_ || IsSoundAt(position)) return position;
    return kNone;
  }

  /// Without a sound candidate at all soundness does not count.
  const Candidate& Best() {
    const auto all = [](const Candidate&) { return true; };
    const auto by_score = [this](const Candidate& candidate) { return -ScoreOf(candidate); };
    std::size_t best = First(all, by_score);
    if (best == kNone) {
      needs_sound_ = false;
      best = First(all, by_score);
    }
    if (best == kNone)
      throw TrainingError(L"None of the allowed models can be built from these designs.");
    return At(best);
  }

  /// Whether a candidate is as good as `reference` within a tolerance, and not much worse than the
  /// best.
  bool IsWithin(const Candidate& candidate, const Candidate& reference, double tolerance,
                const Candidate& best) const {
    const double exact = kExact * (data_.values.maxCoeff() - data_.values.minCoeff());
    return ScoreOf(candidate) >= ScoreOf(reference) - tolerance &&
           candidate.results.predError <= std::max(best.results.predError * kLargestGrowth, exact);
  }

  const Candidate& Choose() {
    const Candidate& best = Best();
    const Candidate& small = At(First(
        [&](const Candidate& candidate) {
          return IsWithin(candidate, best, settings_.toleranceCoP_variables_, best);
        },
        [&](const Candidate& candidate) {
          return std::make_tuple(candidate.GetNumberInputs(), -ScoreOf(candidate));
        }));
    return At(First(
        [&](const Candidate& candidate) {
          return candidate.GetNumberInputs() == small.GetNumberInputs() &&
                 IsWithin(candidate, small, settings_.toleranceCoP_model_, best);
        },
        [&](const Candidate& candidate) {
          return std::make_tuple(candidate.results.settings->GetComplexity(),
                                 candidate.results.settings->GetNumberParameters(),
                                 -ScoreOf(candidate));
        }));
  }

  /// New subspaces around that of the best model of each family: without the inputs that it can
  /// spare, and with the one that tells most about what it leaves unexplained.
  std::vector<BitVector> ProposeByLeaders() {
    std::vector<BitVector> proposed;
    for (const Family family : {Family::kRegression, Family::kMovingLeastSquares,
                                Family::kIsotropicKriging, Family::kAnisotropicKriging}) {
      const std::size_t leader =
          First([&](const Candidate& candidate) { return candidate.form.family == family; },
                [&](const Candidate& candidate) { return -ScoreOf(candidate); });
      if (leader == kNone || !heard_.insert(leader).second) continue;
      trials_.Observe(L"Importance of the inputs");
      const auto model = trials_.Build(At(leader));
      for (const auto& subspaces : {Without(At(leader), *model), With(At(leader), *model)})
        for (const BitVector& subspace : subspaces)
          if (math::metamodel::CountBits(subspace) > 0 && !trials_.WasTried(subspace) &&
              std::find(proposed.begin(), proposed.end(), subspace) == proposed.end())
            proposed.push_back(subspace);
    }
    return proposed;
  }

  /// The subspace of a model without the inputs of small single CoPs.
  std::vector<BitVector> Without(const Candidate& leader, const SurrogateBase& model) const {
    if (leader.GetNumberInputs() < 2) return {};
    Eigen::VectorXd single = ComputeSingleCoPs(model, data_);
    for (const std::uint64_t input : settings_.info_important_)
      if (input < leader.subspace.size())
        single(static_cast<Eigen::Index>(input)) = std::numeric_limits<double>::infinity();
    const double unexplained = 1.0 - leader.results.CoP;
    std::vector<BitVector> subspaces;
    for (const double limit :
         {0.0, std::min(settings_.toleranceCoP_variables_, kSpared * unexplained)}) {
      subspaces.push_back(leader.subspace);
      for (std::size_t j = 0; j < leader.subspace.size(); ++j)
        if (single(static_cast<Eigen::Index>(j)) <= limit) subspaces.back()[j] = false;
    }
    return subspaces;
  }

  /// The subspace of a model and the input that explains most of its cross-validated residuals, if
  /// that is significant among so many inputs.
  std::vector<BitVector> With(const Candidate& leader, const SurrogateBase& model) const {
    const auto num_others = leader.subspace.size() - leader.GetNumberInputs();
    if (num_others == 0) return {};
    const Eigen::VectorXd residuals = data_.values - model.ApproximateCrossValidation(data_.groups);
    const Eigen::VectorXd significances =
        SignificancesOfInputs(data_.points, residuals, leader.subspace);
    Eigen::Index best = 0;
    const double chance = (1.0 - significances.maxCoeff(&best)) * static_cast<double>(num_others);
    if (chance > 1.0 - settings_.min_significance_) return {};
    BitVector subspace = leader.subspace;
    subspace[static_cast<std::size_t>(best)] = true;
    return {subspace};
  }

  const ResponseData& data_;
  const math::metamodel::ZELSettings& settings_;
  CandidateTrials trials_;
  std::map<std::size_t, bool> is_sound_;  ///< of the candidates for which it was asked
  std::set<std::size_t> heard_;           ///< leaders that made their proposals
  bool needs_sound_ = true;
};

ResponseData RowsOf(const ResponseData& data, const std::vector<Eigen::Index>& rows) {
  ResponseData some;
  some.points = data.points(rows, Eigen::all);
  some.values = data.values(rows);
  some.groups = data.groups(rows);
  for (const auto& column : some.points.colwise()) some.num_levels.push_back(CountLevels(column));
  return some;
}

/// Predictions at `points` by the best model of one form; the mean where there can be none.
Eigen::VectorXd PredictByBest(const ResponseData& data,
                              const math::metamodel::ZELSettings& settings,
                              const CandidateForm& form, const Eigen::MatrixXd& points) {
  const CompetitionObserver none = [](const std::wstring&, double) {};
  try {
    Competition competition(data, settings, {form}, none);
    if (!IsConstantColumn(data.values))
      return competition.Build(competition.Run())->Approximate(points);
  } catch (const TrainingError&) {
    // too few designs for the form
  }
  return Eigen::VectorXd::Constant(points.rows(), data.values.mean());
}

/// The share of the variance that models of one form predict whose inputs and parameters were chosen
/// without the group that they predict.
double ChooseAnew(const ResponseData& data, const math::metamodel::ZELSettings& settings,
                  const CandidateForm& form, const CompetitionObserver& observer) {
  const std::set<std::uint64_t> groups(data.groups.begin(), data.groups.end());
  Eigen::VectorXd predicted(data.values.size());
  double done = 0.0;
  for (const std::uint64_t group : groups) {
    observer(L"Choice without each group",
             kCompeted + (1.0 - kCompeted) * done++ / static_cast<double>(groups.size()));
    std::vector<Eigen::Index> own, others;
    for (Eigen::Index i = 0; i < data.groups.size(); ++i)
      (data.groups(i) == group ? own : others).push_back(i);
    predicted(own) =
        PredictByBest(RowsOf(data, others), settings, form, data.points(own, Eigen::all));
  }
  return Determination(data.values, predicted);
}

/// Whether the choice of the model may have much to do with its CoP: much is unexplained, and the
/// designs are few.
bool IsChoiceInDoubt(const ChosenModel& chosen, const ResponseData& data) {
  constexpr double kUnexplained = 0.1;
  constexpr Eigen::Index kFew = 300;
  return chosen.results.CoP < 1.0 - kUnexplained && data.values.size() <= kFew;
}

}  // namespace

ChosenModel RunCompetition(const ResponseData& data, const TrainSettings& settings,
                           const CompetitionObserver& observer) {
  const CompetitionObserver in_part = [&](const std::wstring& candidate, double share) {
    observer(candidate, kCompeted * share);
  };
  Competition competition(data, settings.models, AllowedForms(settings.models), in_part);
  const Candidate& winner = competition.Run();
  ChosenModel chosen = competition.Finish(winner);
  if (IsChoiceInDoubt(chosen, data))
    chosen.results.CoDtest = ChooseAnew(data, settings.models, winner.form, observer);
  return chosen;
}

ChosenModel MakeConstantModel(const ResponseData& data) {
  ChosenModel chosen;
  LinearRegressionSettings form(static_cast<std::uint64_t>(data.points.cols()));
  form.SetVariableSelection(BitVector(static_cast<std::size_t>(data.points.cols()), false));
  chosen.model = boost::make_shared<LinearRegression>(data.points, data.values, form);
  chosen.model->Build();
  chosen.model->BuildErrors(data.groups);
  chosen.text = L"Constant";
  chosen.results.settings.reset(form.Clone());
  chosen.results.CoP = chosen.results.CoPadj = 1.0;
  chosen.results.CoD = chosen.results.CoDadj = 1.0;
  chosen.results.CoDtest = std::numeric_limits<double>::quiet_NaN();
  chosen.results.singleCoPs = Eigen::VectorXd::Zero(data.points.cols());
  chosen.model->SetSingleCoPs(chosen.results.singleCoPs);
  chosen.tried.push_back(chosen.results);
  return chosen;
}

}  // namespace corvath::training
