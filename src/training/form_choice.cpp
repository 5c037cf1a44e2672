#include "training/form_choice.h"

#include <algorithm>
#include <cmath>

namespace corvath::training {
namespace {

/// Squared errors that many times those of the best are larger, whatever their scatter says: of exact
/// functions some form is often a hundred times better, most of it at a few designs.
constexpr double kLargestGrowth = 2.0;
/// Of paired differences, within which equally simple forms, and a form and the constant, count as
/// equal.
constexpr double kNearlyEqual = 0.35;

int RankOf(const CandidateForm& form) {
  if (form.box_cox) return 2;
  const bool shrinks = form.ridge || form.family == Family::kIsotropicKriging ||
                       form.family == Family::kAnisotropicKriging;
  return shrinks ? 0 : 1;
}

/// Whether errors are larger than others by at most so much: on average, of paired differences.
bool IsWithin(const Eigen::VectorXd& errors, const Eigen::VectorXd& best, double standard_errors) {
  const auto n = static_cast<double>(errors.size());
  const Eigen::ArrayXd differences = (errors - best).array();
  const double mean = differences.mean();
  const double deviation = std::sqrt((differences - mean).square().sum() / (n * (n - 1.0)));
  return mean <= standard_errors * deviation;
}

}  // namespace

std::size_t ChooseForm(const std::vector<const Candidate*>& finalists,
                       const Eigen::MatrixXd& errors, std::size_t num_groups) {
  // sqrt(1/J + n_test/n_train) in place of sqrt(1/J)
  const auto groups = static_cast<double>(num_groups);
  const double correction = num_groups < 2 ? 1.0 : std::sqrt(1.0 + groups / (groups - 1.0));
  const Eigen::VectorXd totals = errors.colwise().sum();
  const auto total = [&](std::size_t k) { return totals(static_cast<Eigen::Index>(k)); };
  const auto column = [&](std::size_t k) { return errors.col(static_cast<Eigen::Index>(k)); };
  std::vector<std::size_t> forms;
  for (std::size_t k = 1; k < finalists.size(); ++k)
    if (std::isfinite(total(k))) forms.push_back(k);
  const auto keep = [&](const auto& predicate) {
    forms.erase(
        std::remove_if(forms.begin(), forms.end(), [&](std::size_t k) { return !predicate(k); }),
        forms.end());
  };
  const auto best_of = [&] {
    return *std::min_element(forms.begin(), forms.end(),
                             [&](std::size_t a, std::size_t b) { return total(a) < total(b); });
  };
  if (forms.empty()) return 0;
  std::size_t best = best_of();
  keep([&](std::size_t k) {
    return k == best || (total(k) <= kLargestGrowth * total(best) &&
                         IsWithin(column(k), column(best), correction));
  });
  int simplest = RankOf(finalists[forms.front()]->form);
  for (const std::size_t k : forms) simplest = std::min(simplest, RankOf(finalists[k]->form));
  keep([&](std::size_t k) { return RankOf(finalists[k]->form) == simplest; });
  best = best_of();
  keep([&](std::size_t k) {
    return k == best || IsWithin(column(k), column(best), correction * kNearlyEqual);
  });
  const std::size_t winner =
      *std::min_element(forms.begin(), forms.end(), [&](std::size_t a, std::size_t b) {
        return finalists[a]->complexity < finalists[b]->complexity;
      });
  return IsWithin(column(0), column(winner), correction * kNearlyEqual) ? 0 : winner;
}

Eigen::MatrixXd SquaredErrors(const Eigen::VectorXd& values, const Eigen::MatrixXd& predicted) {
  constexpr double kExact = 1e-9;
  const double exact = kExact * (values.maxCoeff() - values.minCoeff());
  return (predicted.colwise() - values).unaryExpr([&](double error) {
    return std::abs(error) <= exact ? 0.0 : error * error;  // NaN stays
  });
}

}  // namespace corvath::training
