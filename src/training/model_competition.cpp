#include "training/model_competition.h"

#include "foundation/parallel.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/linear_regression_settings.h"
#include "training/blend.h"
#include "training/competition.h"
#include "training/form_choice.h"
#include "training/large_competition.h"
#include "training/training_table.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <exception>
#include <limits>
#include <map>
#include <mutex>
#include <numeric>
#include <utility>

namespace corvath::training {
namespace {

using math::metamodel::IndexVector;
using math::metamodel::LinearRegression;
using math::metamodel::LinearRegressionSettings;

using Rows = std::vector<Eigen::Index>;

/// As the costs of candidate_trials.cpp are estimated, which is on the safe side.
constexpr double kOperationsPerSecond = 8e9;
/// Groups that the whole choice is repeated without: more where designs are few, and each counts.
constexpr Eigen::Index kFew = 100;
constexpr std::uint32_t kGroupsOfFew = 10;
constexpr std::uint32_t kGroupsOfMany = 5;

Rows AllRows(Eigen::Index n) {
  Rows rows(static_cast<std::size_t>(n));
  std::iota(rows.begin(), rows.end(), Eigen::Index{0});
  return rows;
}

/// The progress of several pieces of work that run side by side, as one.
class SharedProgress {
 public:
  SharedProgress(const CompetitionObserver& observer, std::size_t num_pieces)
      : observer_(observer), shares_(num_pieces, 0.0) {}

  /// Passes the share of one piece on. When the observer has thrown, every piece throws the same.
  void Observe(std::size_t piece, const std::wstring& text, double share) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (end_) std::rethrow_exception(end_);
    shares_[piece] = share;
    const double sum = std::accumulate(shares_.begin(), shares_.end(), 0.0);
    try {
      observer_(text, sum / static_cast<double>(shares_.size()));
    } catch (...) {
      end_ = std::current_exception();
      throw;
    }
  }

 private:
  const CompetitionObserver& observer_;
  std::mutex mutex_;
  std::vector<double> shares_;
  std::exception_ptr end_;
};

/// The model of a candidate with all figures that its own fit gives.
ChosenModel Finish(CandidateTrials& trials, const Candidate& winner, const ResponseData& data,
                   const boost::shared_ptr<math::metamodel::SurrogateBase>& model) {
  trials.Observe(L"Importance of the inputs");
  ChosenModel chosen;
  chosen.model = model;
  chosen.text = Describe(winner.form);
  chosen.results = winner.results;
  chosen.results.singleCoPs = trials.ComputeSingleCoPs(winner, *chosen.model);
  chosen.model->SetSingleCoPs(chosen.results.singleCoPs);
  for (const Candidate& tried : trials.GetCandidates()) chosen.tried.push_back(tried.results);
  chosen.rows = AllRows(data.values.size());
  if (const std::wstring limits = trials.GetLimits(); !limits.empty())
    chosen.limits.push_back(limits);
  return chosen;
}

/// What a finalist predicts; forms without a model are not there.
struct FormForecast {
  CandidateForm form;
  bool is_whole;
  Eigen::VectorXd predicted;
};

/// Predictions at `points` by the finalists of a competition among `data`.
std::vector<FormForecast> PredictByEachForm(const ResponseData& data, const TrainSettings& settings,
                                            double budget, const Eigen::MatrixXd& points,
                                            const CompetitionObserver& observer) {
  std::vector<FormForecast> forecasts;
  if (!IsConstantColumn(data.values)) {
    Competition competition(data, settings, AllowedForms(settings.models), budget, observer);
    std::map<const Candidate*, Eigen::VectorXd> known;  // one may be a finalist twice
    for (const auto& [candidate, is_whole] : competition.Run()) {
      Eigen::VectorXd& predicted = known[candidate];
      if (predicted.size() == 0)
        predicted = competition.GetTrials().Build(*candidate)->Approximate(points);
      forecasts.push_back({candidate->form, is_whole, predicted});
    }
  } else {
    forecasts.push_back(
        {kConstantForm, false, Eigen::VectorXd::Constant(points.rows(), data.values.mean())});
  }
  return forecasts;
}

/// The forecast of a finalist. One that has no model here because its transform turned out to be
/// none predicts as without it; one that has too few designs here, by the mean.
const Eigen::VectorXd& ForecastOf(const Finalist& finalist,
                                  const std::vector<FormForecast>& forecasts) {
  CandidateForm form = finalist.candidate->form;
  for (int step = 0; step < 2; ++step) {
    for (const FormForecast& forecast : forecasts)
      if (IsSameForm(forecast.form, form) && forecast.is_whole == finalist.is_whole)
        return forecast.predicted;
    form.box_cox = false;
  }
  return forecasts.front().predicted;
}

/// The whole choice, made again without each of some groups.
struct HonestForecasts {
  IndexVector groups;
  std::vector<Rows> members;                         ///< of each group
  std::vector<std::vector<FormForecast>> forecasts;  ///< at the members of each group
  Eigen::MatrixXd predicted;                         ///< n x F: by the form of each finalist

  HonestForecasts(const ResponseData& data, std::uint32_t num_groups, std::uint32_t seed) {
    Eigen::MatrixXd designs(data.points.rows(), data.points.cols() + 1);
    designs << data.points, data.values;  // what coincides in both shares a group
    groups = MakeGroups(designs, num_groups, seed);
    std::map<std::uint64_t, Rows> by_label;
    for (Eigen::Index i = 0; i < groups.size(); ++i) by_label[groups(i)].push_back(i);
    for (auto& [label, rows] : by_label) members.push_back(std::move(rows));
    forecasts.resize(members.size());
  }

  Rows WithoutGroup(std::size_t g) const { return RowsWithout(groups.size(), members[g]); }

  void Collect(const Finalists& finalists) {
    predicted.resize(groups.size(), static_cast<Eigen::Index>(finalists.size()));
    for (std::size_t k = 0; k < finalists.size(); ++k)
      for (std::size_t g = 0; g < members.size(); ++g)
        predicted(members[g], static_cast<Eigen::Index>(k)) =
            ForecastOf(finalists[k], forecasts[g]);
  }
};

/// What the choice is made among: the forms, and behind them the one that is taken where none is better
/// beyond doubt, if that is a mean of several.
struct Contenders {
  Eigen::MatrixXd predicted;  ///< a column each
  std::size_t robust;
  boost::shared_ptr<math::metamodel::SurrogateBase> blended;  ///< the model behind the last column
  Candidate of_blend;                                         ///< its figures

  Contenders(const HonestForecasts& honest, const Finalists& finalists,
             const CandidateTrials& trials, const ResponseData& data)
      : predicted(honest.predicted), robust(FindRobust(finalists)) {
    Blend blend;
    std::vector<Eigen::Index> columns;
    std::vector<double> odds_of_members;
    for (const CandidateForm& form : {kAnisotropicForm, kIsotropicForm, kPlaneForm, kBowlForm}) {
      const std::size_t k = FindWhole(finalists, form);
      const bool is_carrier = blend.members.empty();
      if (is_carrier && k == 0) return;  // no kriging with a radius for each input
      if (k == 0 ||
          !(is_carrier || finalists[k].candidate->subspace == blend.members.front()->subspace))
        continue;
      blend.members.push_back(finalists[k].candidate);
      columns.push_back(static_cast<Eigen::Index>(k));
      odds_of_members.push_back(OddsOf(form));
    }
    const Eigen::VectorXd odds = Eigen::Map<const Eigen::VectorXd>(
        odds_of_members.data(), static_cast<Eigen::Index>(odds_of_members.size()));
    const Eigen::MatrixXd of_members = predicted(Eigen::all, columns);
    blend.shares = SharesOf(data.values, of_members, odds);
    Eigen::Index main = 0;
    if (blend.shares.maxCoeff(&main) < 1.0) {
      blended = blend.Build(trials, data);
      // No model follows the mean: the one of the largest share.
      if (!blended) blend.shares = Eigen::VectorXd::Unit(blend.shares.size(), main);
    }
    if (blend.shares(0) == 1.0) return;
    of_blend = *blend.members[blended ? 0 : static_cast<std::size_t>(main)];
    if (!blended) blended = trials.Build(of_blend);
    of_blend.predicted.setZero();
    for (std::size_t k = 0; k < blend.members.size(); ++k)
      if (const double share = blend.shares(static_cast<Eigen::Index>(k)); share > 0.0)
        of_blend.predicted += share * blend.members[k]->predicted;
    of_blend.results = Judge(*blended, of_blend.form, data, of_blend.predicted);
    predicted.conservativeResize(Eigen::NoChange, predicted.cols() + 1);
    robust = static_cast<std::size_t>(predicted.cols()) - 1;
    predicted.rightCols(1) = PredictByBlend(data.values, of_members, odds, honest.members);
  }
};

/// Predictions of each group by the form that the other groups choose: the choice of the form does
/// not know what it is judged by either.
Eigen::VectorXd PredictByChoice(const HonestForecasts& honest, const Eigen::MatrixXd& errors,
                                const Contenders& contenders) {
  Eigen::VectorXd predicted(errors.rows());
  for (std::size_t g = 0; g < honest.members.size(); ++g) {
    const std::size_t form = Choose(errors(honest.WithoutGroup(g), Eigen::all), contenders.robust,
                                    honest.members.size());
    for (const Eigen::Index row : honest.members[g])
      predicted(row) = contenders.predicted(row, static_cast<Eigen::Index>(form));
  }
  return predicted;
}

ChosenModel ChooseAmongAll(const ResponseData& data, const TrainSettings& settings,
                           double whole_budget, const CompetitionObserver& observer) {
  HonestForecasts honest(data, data.values.size() <= kFew ? kGroupsOfFew : kGroupsOfMany,
                         settings.seed + 1);
  const std::size_t num_groups = honest.members.size();
  const double budget = whole_budget / static_cast<double>(num_groups + 1);
  SharedProgress progress(observer, num_groups + 1);
  const auto observer_of = [&progress](std::size_t piece) -> CompetitionObserver {
    return [&progress, piece](const std::wstring& text, double share) {
      progress.Observe(piece, text, share);
    };
  };
  const CompetitionObserver of_all = observer_of(num_groups);
  Competition competition(data, settings, AllowedForms(settings.models), budget, of_all);
  Finalists finalists;
  utils::ParallelTasks(num_groups + 1, [&](std::size_t g) {
    if (g == num_groups)
      finalists = competition.Run();
    else
      honest.forecasts[g] =
          PredictByEachForm(RowsOf(data, honest.WithoutGroup(g)), settings, budget,
                            data.points(honest.members[g], Eigen::all), observer_of(g));
  });
  honest.Collect(finalists);

  CandidateTrials& trials = competition.GetTrials();
  const Contenders contenders(honest, finalists, trials, data);
  const Eigen::MatrixXd errors = SquaredErrors(data.values, contenders.predicted);
  const std::size_t winner = Choose(errors, contenders.robust, num_groups);
  const bool is_blend = winner == finalists.size();
  const Candidate& candidate = is_blend ? contenders.of_blend : *finalists[winner].candidate;
  ChosenModel chosen =
      Finish(trials, candidate, data, is_blend ? contenders.blended : trials.Build(candidate));
  const Eigen::VectorXd predicted = winner == 0 ? Eigen::VectorXd(honest.predicted.col(0))
                                                : PredictByChoice(honest, errors, contenders);
  if (IsBetterThanConstant(SquaredErrors(data.values, predicted), errors.col(0), num_groups))
    chosen.results.CoDtest = Determination(data.values, predicted);
  else
    chosen.results.CoDtest = 0.0;
  chosen.model->SetErrors(data.values - predicted, honest.groups);
  return chosen;
}

}  // namespace

ChosenModel RunCompetition(const ResponseData& data, const TrainSettings& settings,
                           const CompetitionObserver& observer) {
  const double budget = settings.budget_seconds * kOperationsPerSecond;
  if (data.values.size() > kMostRows) return RunLargeCompetition(data, settings, budget, observer);
  return ChooseAmongAll(data, settings, budget, observer);
}

ChosenModel MakeConstantModel(const ResponseData& data) {
  ChosenModel chosen;
  LinearRegressionSettings form(static_cast<std::uint64_t>(data.points.cols()));
  form.SetVariableSelection(
      math::metamodel::BitVector(static_cast<std::size_t>(data.points.cols()), false));
  chosen.model = boost::make_shared<LinearRegression>(data.points, data.values, form);
  chosen.model->Build();
  chosen.model->BuildErrors(data.groups);
  chosen.text = L"Constant";
  chosen.results.settings.reset(form.Clone());
  chosen.results.CoP = chosen.results.CoPadj = 1.0;
  chosen.results.CoD = chosen.results.CoDadj = 1.0;
  chosen.results.CoDtest = 1.0;
  chosen.results.singleCoPs = Eigen::VectorXd::Zero(data.points.cols());
  chosen.model->SetSingleCoPs(chosen.results.singleCoPs);
  chosen.tried.push_back(chosen.results);
  chosen.rows = AllRows(data.values.size());
  return chosen;
}

}  // namespace corvath::training
