#include "training/forward_selection.h"

#include "stochastics/special_functions.h"
#include "training/scaled_points.h"

#include <algorithm>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;

/// A column that keeps less than this share of its length beside the others tells nothing new.
constexpr double kDependent = 1e-6;
/// Below this share of the variance what is left to explain is rounding.
constexpr double kExact = 1e-20;

/// An orthonormal basis of the terms of a regression, and what they leave of the response.
class OrthogonalTerms {
 public:
  /// The constant alone.
  explicit OrthogonalTerms(const Eigen::VectorXd& values)
      : residual_(values.array() - values.mean()) {
    basis_.push_back(Eigen::VectorXd::Ones(values.size()).normalized());
  }

  std::size_t GetNumber() const { return basis_.size(); }
  std::size_t GetNumberPoints() const { return static_cast<std::size_t>(residual_.size()); }
  double GetResidual() const { return residual_.squaredNorm(); }

  /// Adds the parts of `columns` that are new.
  void Add(const Eigen::MatrixXd& columns) {
    for (const auto& column : columns.colwise()) {
      Eigen::VectorXd part = column;
      for (int repeat = 0; repeat < 2; ++repeat)  // once more takes the rounding out
        for (const Eigen::VectorXd& other : basis_) part -= other.dot(part) * other;
      if (!(part.norm() > kDependent * column.norm())) continue;
      part.normalize();
      residual_ -= part.dot(residual_) * part;
      basis_.push_back(std::move(part));
    }
  }

 private:
  std::vector<Eigen::VectorXd> basis_;
  Eigen::VectorXd residual_;
};

/// The terms that input j brings to those of `chosen`.
Eigen::MatrixXd TermsOf(const Eigen::MatrixXd& scaled, Eigen::Index j,
                        const std::vector<Eigen::Index>& chosen) {
  Eigen::MatrixXd terms(scaled.rows(), 2 + static_cast<Eigen::Index>(chosen.size()));
  terms.col(0) = scaled.col(j);
  terms.col(1) = scaled.col(j).cwiseAbs2();
  for (std::size_t k = 0; k < chosen.size(); ++k)
    terms.col(2 + static_cast<Eigen::Index>(k)) = scaled.col(j).cwiseProduct(scaled.col(chosen[k]));
  return terms;
}

/// F test of the terms that were added since there were `num_before`, with the sum of squares
/// `before`. The statistic is a quotient of shares, and its distribution function a beta function of
/// the share explained.
double Significance(double before, std::size_t num_before, const OrthogonalTerms& terms) {
  const auto added = static_cast<double>(terms.GetNumber() - num_before);
  const double spare = static_cast<double>(terms.GetNumberPoints() - terms.GetNumber());
  if (!(added > 0.0 && spare > 0.0 && before > 0.0)) return 0.0;
  return math::IncompleteBeta(0.5 * added, 0.5 * spare, 1.0 - terms.GetResidual() / before);
}

/// An input that is taken in, and the terms with it.
struct NextInput {
  Eigen::Index input;
  OrthogonalTerms terms;
};

/// The input that explains most beside `chosen`, of those that are left.
NextInput BestNext(const Eigen::MatrixXd& scaled, const std::vector<Eigen::Index>& chosen,
                   const BitVector& inputs, const OrthogonalTerms& terms) {
  NextInput best{-1, terms};
  for (Eigen::Index j = 0; j < scaled.cols(); ++j) {
    if (inputs[static_cast<std::size_t>(j)]) continue;
    OrthogonalTerms with = terms;
    with.Add(TermsOf(scaled, j, chosen));
    if (best.input < 0 || with.GetResidual() < best.terms.GetResidual())
      best = {j, std::move(with)};
  }
  return best;
}

}  // namespace

std::vector<ForwardStep> SelectForward(const ResponseData& data, bool adjusted,
                                       double min_significance) {
  const Eigen::MatrixXd scaled = ScaledPoints(data.points);
  const std::size_t n = static_cast<std::size_t>(data.values.size());
  std::vector<ForwardStep> steps;
  OrthogonalTerms terms(data.values);
  const double total = terms.GetResidual();
  BitVector inputs(static_cast<std::size_t>(scaled.cols()), false);
  std::vector<Eigen::Index> chosen;
  while (chosen.size() < inputs.size() && terms.GetResidual() > kExact * total &&
         2 * (terms.GetNumber() + 2 + chosen.size()) <= n) {
    NextInput next = BestNext(scaled, chosen, inputs, terms);
    // By the number of inputs to choose from: the best of many explains something by chance.
    const double chance = (1.0 - Significance(terms.GetResidual(), terms.GetNumber(), next.terms)) *
                          static_cast<double>(inputs.size() - chosen.size());
    if (!chosen.empty() && std::min(chance, 1.0) > 1.0 - min_significance) break;
    terms = std::move(next.terms);
    chosen.push_back(next.input);
    inputs[static_cast<std::size_t>(next.input)] = true;
    const double share = terms.GetResidual() / total;
    const double factor =
        static_cast<double>(n - 1) / static_cast<double>(n - terms.GetNumber());  // at most 2
    steps.push_back({inputs, 1.0 - share * (adjusted ? factor : 1.0)});
  }
  return steps;
}

Eigen::VectorXd SignificancesOfInputs(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                                      const BitVector& partners) {
  const Eigen::MatrixXd scaled = ScaledPoints(points);
  std::vector<Eigen::Index> chosen;
  for (std::size_t j = 0; j < partners.size(); ++j)
    if (partners[j]) chosen.push_back(static_cast<Eigen::Index>(j));
  Eigen::VectorXd significances = Eigen::VectorXd::Zero(points.cols());
  for (Eigen::Index j = 0; j < points.cols(); ++j) {
    if (partners[static_cast<std::size_t>(j)]) continue;
    OrthogonalTerms terms(values);
    const double before = terms.GetResidual();
    terms.Add(TermsOf(scaled, j, chosen));
    for (const Eigen::Index partner : chosen)
      terms.Add(scaled.col(j).cwiseProduct(scaled.col(partner).cwiseAbs2()));
    significances(j) = Significance(before, 1, terms);
  }
  return significances;
}

}  // namespace corvath::training
