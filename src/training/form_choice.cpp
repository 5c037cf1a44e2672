#include "training/form_choice.h"

#include <algorithm>
#include <cmath>

namespace corvath::training {
namespace {

/// Squared errors that many times those of the best are larger, whatever their scatter says: of exact
/// functions some form is often a hundred times better, most of it at a few designs.
constexpr double kLargestGrowth = 2.0;
/// Standard errors of paired differences within which a plainer form counts as equal: one by custom,
/// more where designs are few and standard errors themselves are uncertain; and within which equally
/// plain ones do. On some 300 public tables of 18 to 200 rows, 1 to 2 and 0.2 to 0.5 do much the same.
constexpr double kEqual = 1.0;
constexpr double kEqualForFew = 1.5;
constexpr Eigen::Index kFewErrors = 150;
constexpr double kNearlyEqual = 0.35;

int RankOf(const Finalist& finalist) {
  const CandidateForm& form = finalist.candidate->form;
  if (form.box_cox) return 4;
  if (!Shrinks(form)) return 3;
  if (!finalist.is_whole || (form.ridge && form.order > 1)) return 2;
  return form.ridge ? 0 : 1;
}

/// sqrt(1/J + n_test/n_train) in place of sqrt(1/J) for J groups.
double CorrectionFor(std::size_t num_groups) {
  const auto groups = static_cast<double>(num_groups);
  return num_groups < 2 ? 1.0 : std::sqrt(1.0 + groups / (groups - 1.0));
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

std::size_t Choose(const Finalists& finalists, const Eigen::MatrixXd& errors,
                   std::size_t num_groups) {
  const double correction = CorrectionFor(num_groups);
  const double equal = errors.rows() <= kFewErrors ? kEqualForFew : kEqual;
  const Eigen::VectorXd totals = errors.colwise().sum();
  const auto total = [&](std::size_t k) { return totals(static_cast<Eigen::Index>(k)); };
  const auto column = [&](std::size_t k) { return errors.col(static_cast<Eigen::Index>(k)); };
  std::vector<std::size_t> left;
  for (std::size_t k = 1; k < finalists.size(); ++k)
    if (std::isfinite(total(k))) left.push_back(k);
  const auto keep = [&](const auto& predicate) {
    left.erase(
        std::remove_if(left.begin(), left.end(), [&](std::size_t k) { return !predicate(k); }),
        left.end());
  };
  const auto best_left = [&] {
    return *std::min_element(left.begin(), left.end(),
                             [&](std::size_t a, std::size_t b) { return total(a) < total(b); });
  };
  if (left.empty()) return 0;
  std::size_t best = best_left();
  keep([&](std::size_t k) {
    return k == best || (total(k) <= kLargestGrowth * total(best) &&
                         IsWithin(column(k), column(best), correction * equal));
  });
  int plainest = RankOf(finalists[left.front()]);
  for (const std::size_t k : left) plainest = std::min(plainest, RankOf(finalists[k]));
  keep([&](std::size_t k) { return RankOf(finalists[k]) == plainest; });
  best = best_left();
  keep([&](std::size_t k) {
    return k == best || IsWithin(column(k), column(best), correction * kNearlyEqual);
  });
  const std::size_t winner =
      *std::min_element(left.begin(), left.end(), [&](std::size_t a, std::size_t b) {
        return finalists[a].candidate->complexity < finalists[b].candidate->complexity;
      });
  return IsWithin(column(winner), column(0), correction) ? winner : 0;
}

bool IsBetterThanConstant(const Eigen::VectorXd& errors, const Eigen::VectorXd& of_constant,
                          std::size_t num_groups) {
  return !IsWithin(of_constant, errors, CorrectionFor(num_groups));
}

Eigen::MatrixXd SquaredErrors(const Eigen::VectorXd& values, const Eigen::MatrixXd& predicted) {
  constexpr double kExact = 1e-9;
  const double exact = kExact * (values.maxCoeff() - values.minCoeff());
  return (predicted.colwise() - values).unaryExpr([&](double error) {
    return std::abs(error) <= exact ? 0.0 : error * error;  // NaN stays
  });
}

}  // namespace corvath::training
