#include "training/large_competition.h"

#include "training/competition.h"
#include "training/form_choice.h"
#include "training/spread_rows.h"

#include <algorithm>
#include <string>
#include <utility>

namespace corvath::training {
namespace {

using Rows = std::vector<Eigen::Index>;

/// Support points that a model bears: what it keeps of them, and what its errors cost at each
/// prediction, grows with their number; of kriging a matrix of their square is factorised.
constexpr Eigen::Index kMostKriging = 2500;
constexpr Eigen::Index kMostRegression = 20000;
/// Rows on which the best of each form are compared, beyond those of the competition.
constexpr Eigen::Index kMostJudged = 10000;
/// Rows from which the winner chooses its radii and nugget anew.
constexpr Eigen::Index kFitRows = 500;

Rows Pick(const Rows& from, const Rows& positions) {
  Rows picked;
  for (const Eigen::Index position : positions)
    picked.push_back(from[static_cast<std::size_t>(position)]);
  return picked;
}

bool IsKriging(Family family) {
  return family == Family::kIsotropicKriging || family == Family::kAnisotropicKriging;
}

/// A model, what it was fitted to, and its predictions at these rows without their groups.
struct Fit {
  boost::shared_ptr<math::metamodel::SurrogateBase> model;
  Rows rows;
  Eigen::VectorXd predicted;
};

/// The winner, fitted to as many rows as its family bears.
Fit FitToMany(const Candidate& winner, const Rows& competed, const ResponseData& data,
              const TrainSettings& settings, const std::function<void()>& interruption_point) {
  Fit fit;
  if (winner.form.family == Family::kMovingLeastSquares)
    fit.rows = competed;
  else
    fit.rows =
        SpreadRows(data.points, IsKriging(winner.form.family) ? kMostKriging : kMostRegression);
  const ResponseData some = RowsOf(data, fit.rows);
  const auto form = MakeSettings(winner.form, winner.subspace, some, settings.models);
  FittedForm fitted;
  if (winner.form.family == Family::kMovingLeastSquares) {
    fitted.model = MakeModel(*winner.results.settings, some.points, some.values);
    fitted.model->Build();
    fitted.predicted = winner.predicted;
  } else {
    fitted =
        FitForm(winner.form, *form, some, SpreadRows(some.points, kFitRows), interruption_point);
  }
  fit.model = fitted.model;
  fit.predicted = fitted.predicted;
  return fit;
}

/// The finalist that wins by predictions at `judged` beside those of its own cross-validation.
const Candidate& ChooseByAll(CandidateTrials& trials, const Finalists& finalists,
                             const ResponseData& competed, const ResponseData& judged) {
  const Eigen::Index n = competed.values.size();
  Eigen::VectorXd values(n + judged.values.size());
  values << competed.values, judged.values;
  Eigen::MatrixXd predicted(values.size(), static_cast<Eigen::Index>(finalists.size()));
  for (std::size_t k = 0; k < finalists.size(); ++k) {
    const Candidate& finalist = *finalists[k].candidate;
    trials.Observe(Describe(finalist.form) + L", judged on all designs");
    predicted.col(static_cast<Eigen::Index>(k)) << finalist.predicted,
        trials.Build(finalist)->Approximate(judged.points);
  }
  constexpr std::size_t kNoGroups = 1;  // most of these designs are new to the models
  return *finalists[Choose(SquaredErrors(values, predicted), FindRobust(finalists), kNoGroups)]
              .candidate;
}

}  // namespace

ChosenModel RunLargeCompetition(const ResponseData& data, const TrainSettings& settings,
                                double budget, const CompetitionObserver& observer) {
  const Eigen::Index n = data.values.size();
  const Rows competed = SpreadRows(data.points, std::min(kMostRows, 2 * n / 3));
  const ResponseData some = RowsOf(data, competed);
  constexpr double kCompeted = 0.7;  // share of the work
  const CompetitionObserver in_part = [&](const std::wstring& text, double share) {
    observer(text, kCompeted * share);
  };
  Competition competition(some, settings, AllowedForms(settings.models), budget, in_part);
  const Finalists finalists = competition.Run();
  CandidateTrials& trials = competition.GetTrials();
  const Rows others = RowsWithout(n, competed);
  const Rows judged = Pick(others, SpreadRows(data.points(others, Eigen::all), kMostJudged));
  const Candidate& winner = ChooseByAll(trials, finalists, some, RowsOf(data, judged));

  const std::wstring text = Describe(winner.form);
  const Fit fit = FitToMany(winner, competed, data, settings,
                            [&] { observer(text + L", from more designs", 0.8); });
  observer(text + L", judged on all designs", 0.9);
  Eigen::VectorXd predicted(n);
  predicted(fit.rows) = fit.predicted;
  const Rows rest = RowsWithout(n, fit.rows);
  if (!rest.empty()) {
    const Eigen::VectorXd of_rest = fit.model->Approximate(data.points(rest, Eigen::all));
    predicted(rest) = of_rest;
  }

  ChosenModel chosen;
  chosen.model = fit.model;
  chosen.text = text;
  const ResponseData own = RowsOf(data, fit.rows);
  chosen.results = Judge(*fit.model, winner.form, own, fit.predicted);
  chosen.results.CoDtest = std::max(0.0, Determination(data.values, predicted));
  observer(L"Importance of the inputs", 0.95);
  chosen.results.singleCoPs = trials.ComputeSingleCoPs(winner, *trials.Build(winner));
  chosen.model->SetSingleCoPs(chosen.results.singleCoPs);
  chosen.model->SetErrors(own.values - fit.predicted, own.groups);
  for (const Candidate& tried : trials.GetCandidates()) chosen.tried.push_back(tried.results);
  chosen.rows = fit.rows;
  const auto of_all = [&](Eigen::Index count) {
    return std::to_wstring(count) + L" of " + std::to_wstring(n) + L" designs";
  };
  chosen.limits.push_back(L"the models competed on " + of_all(some.values.size()) +
                          L" that stand for all, since kriging and local models bear no more, and "
                          L"the best of each form "
                          L"were judged on the others, too.");
  if (own.values.size() < n)
    chosen.limits.push_back(L"the model was fitted to " + of_all(own.values.size()) +
                            L", and its CoP is that at all.");
  if (const std::wstring limits = trials.GetLimits(); !limits.empty())
    chosen.limits.push_back(limits);
  return chosen;
}

}  // namespace corvath::training
