#include "training/form_choice.h"

#include <cmath>
#include <limits>

namespace corvath::training {
namespace {

/// Standard errors of paired differences within which a form counts as no worse than the best: one by
/// custom, more where designs are few and standard errors themselves are uncertain. On some 70 public
/// tables of 13 to 200 rows, one loses much, and 1.5 to 3 do much the same.
double StandardErrorsFor(double num_designs) {
  return 1.0 + 40.0 / num_designs;
}

/// Squared errors that many times those of the best are larger, whatever their scatter says: of exact
/// functions some form is often a hundred times better, most of it at a few designs.
double LargestGrowthFor(double num_designs) {
  return 1.0 + 100.0 / num_designs;
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

std::size_t FindWhole(const Finalists& finalists, const CandidateForm& form) {
  for (std::size_t k = 1; k < finalists.size(); ++k)
    if (finalists[k].is_whole && IsSameForm(finalists[k].candidate->form, form)) return k;
  return 0;
}

std::size_t FindRobust(const Finalists& finalists) {
  for (const CandidateForm& form : {kAnisotropicForm, kIsotropicForm, kPlaneForm})
    if (const std::size_t k = FindWhole(finalists, form); k > 0) return k;
  return 0;
}

std::size_t Choose(const Eigen::MatrixXd& errors, std::size_t robust, std::size_t num_groups) {
  const double correction = CorrectionFor(num_groups);
  const auto n = static_cast<double>(errors.rows());
  const Eigen::VectorXd totals = errors.colwise().sum();
  Eigen::Index best = 0;
  for (Eigen::Index k = 1; k < totals.size(); ++k)
    if (std::isfinite(totals(k)) && (best == 0 || totals(k) < totals(best))) best = k;
  auto winner = static_cast<Eigen::Index>(robust);
  if (robust == 0 || !std::isfinite(totals(winner)) ||
      totals(winner) > LargestGrowthFor(n) * totals(best) ||
      !IsWithin(errors.col(winner), errors.col(best), correction * StandardErrorsFor(n)))
    winner = best;
  return IsWithin(errors.col(winner), errors.col(0), correction) ? static_cast<std::size_t>(winner)
                                                                 : 0;
}

bool IsBetterThanConstant(const Eigen::VectorXd& errors, const Eigen::VectorXd& of_constant,
                          std::size_t num_groups) {
  return !IsWithin(of_constant, errors, CorrectionFor(num_groups));
}

Eigen::MatrixXd SquaredErrors(const Eigen::VectorXd& values, const Eigen::MatrixXd& predicted) {
  constexpr double kExact = 1e-9;
  const double exact = kExact * (values.maxCoeff() - values.minCoeff());
  Eigen::MatrixXd errors = (predicted.colwise() - values).unaryExpr([&](double error) {
    return std::abs(error) <= exact ? 0.0 : error * error;  // NaN stays
  });
  for (auto form : errors.colwise())
    if (!form.allFinite()) form.setConstant(std::numeric_limits<double>::infinity());
  return errors;
}

}  // namespace corvath::training
