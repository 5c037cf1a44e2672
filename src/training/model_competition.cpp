#include "training/model_competition.h"

#include "doe/random_draws.h"
#include "metamodel/linear_regression.h"
#include "metamodel/linear_regression_settings.h"
#include "metamodel/moving_least_squares_settings.h"
#include "metamodel/quadratic_box_cox.h"
#include "training/forward_selection.h"
#include "training/subspace_filters.h"
#include "training/training_table.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;
using math::metamodel::LinearRegression;
using math::metamodel::LinearRegressionSettings;
using math::metamodel::MovingLeastSquaresSettings;
using math::metamodel::SubspaceResults;
using math::metamodel::SurrogateBase;
using math::metamodel::SurrogateSettingsBase;

/// Rounds in which the leaders propose further subspaces.
constexpr int kMostRounds = 5;
/// Errors below this share of the response's range are rounding: a model that has them is exact.
constexpr double kExact = 1e-9;
/// An input is spared whose single CoP is below this share of what the model leaves unexplained.
constexpr double kSpared = 0.1;
/// Share of the work that the first round counts for.
constexpr double kFirstRound = 0.8;

/// Rough times of one fit, in those of a regression.
double CostOf(const CandidateForm& form) {
  switch (form.family) {
    case Family::kRegression:
      return 1.0;
    case Family::kMovingLeastSquares:
      return form.order == 1 ? 10.0 : 30.0;
    case Family::kIsotropicKriging:
      return 60.0;
    case Family::kAnisotropicKriging:
      return 600.0;
  }
  return 1.0;
}

/// Points between the designs at which models must behave.
class Probes {
 public:
  explicit Probes(const Eigen::MatrixXd& points)
      : lower_(points.colwise().minCoeff()), upper_(points.colwise().maxCoeff()) {
    constexpr Eigen::Index kNumber = 2000;
    math::Engine engine(1);
    inside_.resize(kNumber, points.cols());
    for (Eigen::Index j = 0; j < inside_.cols(); ++j)
      for (double& probe : inside_.col(j)) probe = math::DrawUniform(engine, lower_(j), upper_(j));
  }

  /// Points at random in the bounds of the designs and, for few inputs, the corners of the subspace.
  Eigen::MatrixXd Of(const BitVector& subspace) const {
    constexpr std::uint64_t kMostCornered = 6;  // inputs
    const auto num_inputs = math::metamodel::CountBits(subspace);
    if (num_inputs > kMostCornered) return inside_;
    const Eigen::Index num_corners = Eigen::Index{1} << num_inputs;
    Eigen::MatrixXd probes(inside_.rows() + num_corners, inside_.cols());
    probes.topRows(inside_.rows()) = inside_;
    auto corners = probes.bottomRows(num_corners);
    corners.rowwise() = 0.5 * (lower_ + upper_);
    int bit = 0;
    for (std::size_t j = 0; j < subspace.size(); ++j) {
      if (!subspace[j]) continue;
      const auto column = static_cast<Eigen::Index>(j);
      for (Eigen::Index i = 0; i < num_corners; ++i)
        corners(i, column) = (i >> bit) & 1 ? upper_(column) : lower_(column);
      ++bit;
    }
    return probes;
  }

 private:
  Eigen::RowVectorXd lower_;
  Eigen::RowVectorXd upper_;
  Eigen::MatrixXd inside_;
};

/// Widens the radius of a moving least squares model until every probe has a prediction: the radius
/// that predicts the designs best may leave holes between them.
void CloseHoles(SurrogateBase& model, const Eigen::MatrixXd& probes) {
  constexpr double kWidening = 1.2;
  constexpr int kMostSteps = 12;  // ninefold
  for (int step = 0; step < kMostSteps; ++step) {
    if (!model.Approximate(probes).hasNaN()) return;
    auto settings = dynamic_cast<const MovingLeastSquaresSettings&>(model.GetSettingsBase());
    settings.SetKernelParameter(kWidening * settings.GetKernelParameter());
    model.Initialize(settings);
    model.Build();
  }
}

class Competition {
 public:
  Competition(const ResponseData& data, const TrainSettings& settings,
              const CompetitionObserver& observer)
      : data_(data),
        settings_(settings.models),
        observer_(observer),
        forms_(AllowedForms(settings.models)),
        probes_(data.points) {}

  ChosenModel Run() {
    TryForms(ProposeSubspaces(data_, settings_), 0.0, kFirstRound);
    for (int round = 0; round < kMostRounds; ++round) {
      const std::vector<BitVector> subspaces = ProposeByLeaders();
      if (subspaces.empty()) break;
      const double width = (1.0 - kFirstRound) / kMostRounds;
      TryForms(subspaces, kFirstRound + width * round, width);
    }
    return Finish(Choose());
  }

 private:
  struct Entry {
    CandidateForm form;
    BitVector subspace;
    SubspaceResults results;
    std::optional<bool> is_sound;  ///< once it was asked for

    std::uint64_t GetNumberInputs() const { return math::metamodel::CountBits(subspace); }
  };

  /// Fits each form over each subspace that is new.
  void TryForms(const std::vector<BitVector>& subspaces, double begin, double width) {
    double total = 0.0;
    for (const CandidateForm& form : forms_) total += CostOf(form);
    total *= static_cast<double>(subspaces.size());
    double done = 0.0;
    // The cheap forms over all subspaces first, so that a user sees soon where it goes.
    for (const CandidateForm& form : forms_)
      for (const BitVector& subspace : subspaces) {
        share_ = begin + width * done / total;
        Try(form, subspace);
        done += CostOf(form);
      }
    tried_subspaces_.insert(tried_subspaces_.end(), subspaces.begin(), subspaces.end());
  }

  void Observe() {
    try {
      observer_(text_, share_);
    } catch (...) {
      is_ended_ = true;
      throw;
    }
  }

  void Try(const CandidateForm& form, const BitVector& subspace) {
    const auto num_inputs = math::metamodel::CountBits(subspace);
    if (form.interactions && num_inputs < 2) return;  // has none
    const auto settings = MakeSettings(form, subspace, data_, settings_);
    if (!IsAffordable(*settings, form.family, data_.values.size(), settings_)) return;
    text_ = Describe(form) + L", " + std::to_wstring(num_inputs) +
            (num_inputs == 1 ? L" input" : L" inputs");
    Observe();
    try {
      const auto model = MakeModel(*settings, data_.points, data_.values);
      model->SetInterruptionPoint([this] { Observe(); });
      if (form.box_cox && IsNeutral(form, subspace, *model)) return;
      if (!model->IsSolvable() || !model->BuildOptimal(data_.groups)) return;
      if (form.box_cox && !model->GetSettingsBase().HasBoxCoxParameter()) return;
      if (form.family == Family::kMovingLeastSquares) CloseHoles(*model, probes_.Of(subspace));
      Entry entry{form, subspace, Judge(*model, form.family, data_), {}};
      if (std::isfinite(entry.results.CoP)) entries_.push_back(std::move(entry));
    } catch (const std::exception&) {
      if (is_ended_) throw;  // a candidate that fails is no candidate
    }
  }

  /// Whether no transform would be found for a model whose transform is that of a regression.
  bool IsNeutral(const CandidateForm& form, const BitVector& subspace, const SurrogateBase& model) {
    if (form.family == Family::kRegression) return false;  // has its own search
    const auto known = is_neutral_.find(subspace);
    if (known != is_neutral_.end()) return known->second;
    constexpr double kSameLambda = 1e-10;
    const auto choice = math::metamodel::FitQuadraticBoxCox(model, [this] { Observe(); });
    const bool neutral =
        choice.parameters.empty() || std::abs(choice.parameters[0] - 1.0) <= kSameLambda;
    is_neutral_[subspace] = neutral;
    return neutral;
  }

  double ScoreOf(const Entry& entry) const {
    return settings_.use_adj_cop_ ? entry.results.CoPadj : entry.results.CoP;
  }

  boost::shared_ptr<SurrogateBase> Rebuild(const Entry& entry) const {
    auto model = MakeModel(*entry.results.settings, data_.points, data_.values);
    model->Build();
    return model;
  }

  bool IsSound(Entry& entry) const {
    if (entry.is_sound) return *entry.is_sound;
    constexpr double kMargin = 2.0;  // of the range of the response
    const double lower = data_.values.minCoeff();
    const double upper = data_.values.maxCoeff();
    const double margin = kMargin * (upper - lower);
    const Eigen::VectorXd predicted = Rebuild(entry)->Approximate(probes_.Of(entry.subspace));
    entry.is_sound = std::all_of(predicted.begin(), predicted.end(), [&](double value) {
      return value >= lower - margin && value <= upper + margin;  // false for NaN
    });
    return *entry.is_sound;
  }

  /// The sound entry of those that `admits` that comes first; null without one. Without a sound one
  /// at all, soundness does not count.
  template <class Admits, class ComesBefore>
  Entry* First(const Admits& admits, const ComesBefore& comes_before) {
    std::vector<Entry*> admitted;
    for (Entry& entry : entries_)
      if (admits(entry)) admitted.push_back(&entry);
    std::stable_sort(admitted.begin(), admitted.end(),
                     [&](const Entry* a, const Entry* b) { return comes_before(*a, *b); });
    const auto found = std::find_if(admitted.begin(), admitted.end(),
                                    [&](Entry* entry) { return !needs_sound_ || IsSound(*entry); });
    return found == admitted.end() ? nullptr : *found;
  }

  Entry* Best() {
    const auto all = [](const Entry&) { return true; };
    const auto better = [this](const Entry& a, const Entry& b) { return ScoreOf(a) > ScoreOf(b); };
    if (Entry* const best = First(all, better)) return best;
    needs_sound_ = false;
    return First(all, better);
  }

  /// Whether `entry` is as good as `reference` within a tolerance, and not much worse than `best`.
  bool IsWithin(const Entry& entry, const Entry& reference, double tolerance,
                const Entry& best) const {
    const double exact = kExact * (data_.values.maxCoeff() - data_.values.minCoeff());
    return ScoreOf(entry) >= ScoreOf(reference) - tolerance &&
           entry.results.predError <= std::max(best.results.predError * kLargestGrowth, exact);
  }

  Entry& Choose() {
    Entry* const best = Best();
    if (best == nullptr) throw TrainingError(L"There are too few designs for any model.");
    const Entry* const small = First(
        [&](const Entry& entry) {
          return IsWithin(entry, *best, settings_.toleranceCoP_variables_, *best);
        },
        [&](const Entry& a, const Entry& b) {
          return std::make_tuple(a.GetNumberInputs(), -ScoreOf(a)) <
                 std::make_tuple(b.GetNumberInputs(), -ScoreOf(b));
        });
    Entry* const simple = First(
        [&](const Entry& entry) {
          return entry.GetNumberInputs() == small->GetNumberInputs() &&
                 IsWithin(entry, *small, settings_.toleranceCoP_model_, *best);
        },
        [&](const Entry& a, const Entry& b) {
          const auto rank = [&](const Entry& entry) {
            return std::make_tuple(entry.results.settings->GetComplexity(),
                                   entry.results.settings->GetNumberParameters(), -ScoreOf(entry));
          };
          return rank(a) < rank(b);
        });
    return *simple;
  }

  /// New subspaces around that of the best model of each family: without the inputs that it can
  /// spare, and with those that tell something about what it leaves unexplained.
  std::vector<BitVector> ProposeByLeaders() {
    std::vector<BitVector> proposed;
    const auto propose = [&](const BitVector& subspace) {
      if (math::metamodel::CountBits(subspace) == 0) return;
      for (const auto* known : {&tried_subspaces_, &proposed})
        if (std::find(known->begin(), known->end(), subspace) != known->end()) return;
      proposed.push_back(subspace);
    };
    for (const Family family : {Family::kRegression, Family::kMovingLeastSquares,
                                Family::kIsotropicKriging, Family::kAnisotropicKriging}) {
      const Entry* const leader =
          First([&](const Entry& entry) { return entry.form.family == family; },
                [&](const Entry& a, const Entry& b) { return ScoreOf(a) > ScoreOf(b); });
      if (leader == nullptr) continue;
      Observe();
      const auto model = Rebuild(*leader);
      for (const BitVector& subspace : Without(*leader, *model)) propose(subspace);
      for (const BitVector& subspace : With(*leader, *model)) propose(subspace);
    }
    return proposed;
  }

  /// The subspace of a model without the inputs of small single CoPs.
  std::vector<BitVector> Without(const Entry& leader, const SurrogateBase& model) const {
    if (leader.GetNumberInputs() < 2) return {};
    const Eigen::VectorXd single = ComputeSingleCoPs(model, data_);
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
  std::vector<BitVector> With(const Entry& leader, const SurrogateBase& model) const {
    const Eigen::VectorXd residuals = data_.values - model.ApproximateCrossValidation(data_.groups);
    const Eigen::VectorXd significances =
        SignificancesOfInputs(data_.points, residuals, leader.subspace);
    Eigen::Index best = 0;
    const double chance = (1.0 - significances.maxCoeff(&best)) *
                          static_cast<double>(leader.subspace.size() - leader.GetNumberInputs());
    if (chance > 1.0 - settings_.min_significance_ ||
        leader.subspace[static_cast<std::size_t>(best)])
      return {};
    BitVector subspace = leader.subspace;
    subspace[static_cast<std::size_t>(best)] = true;
    return {subspace};
  }

  ChosenModel Finish(const Entry& entry) {
    ChosenModel chosen;
    chosen.model = Rebuild(entry);
    chosen.text = Describe(entry.form);
    chosen.results = Judge(*chosen.model, entry.form.family, data_);
    chosen.results.singleCoPs = ComputeSingleCoPs(*chosen.model, data_);
    chosen.model->BuildErrors(data_.groups);
    chosen.model->SetSingleCoPs(chosen.results.singleCoPs);
    for (Entry& tried : entries_) chosen.tried.push_back(std::move(tried.results));
    return chosen;
  }

  const ResponseData& data_;
  const math::metamodel::ZELSettings& settings_;
  const CompetitionObserver& observer_;
  std::vector<CandidateForm> forms_;
  Probes probes_;
  std::vector<Entry> entries_;
  std::vector<BitVector> tried_subspaces_;
  std::map<BitVector, bool> is_neutral_;
  std::wstring text_;
  double share_ = 0.0;
  bool needs_sound_ = true;
  bool is_ended_ = false;  ///< the observer threw
};

}  // namespace

ChosenModel RunCompetition(const ResponseData& data, const TrainSettings& settings,
                           const CompetitionObserver& observer) {
  return Competition(data, settings, observer).Run();
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
