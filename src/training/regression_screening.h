#pragma once

#include "metamodel/types.h"
#include "training/cross_validation.h"

#include <Eigen/Core>

#include <cstddef>
#include <vector>

namespace corvath::training {

/// A polynomial regression from which inputs are taken away one after the other, all terms of an
/// input at once. One factorisation tells the loss for every input:
///
///     SSE without the terms T  =  SSE + b_T' ((X'X)^-1_TT)^-1 b_T
///
/// G. A. F. Seber, A. J. Lee, "Linear Regression Analysis", 2nd ed., Wiley, 2003, section 4.3.
class RegressionScreening {
 public:
  /// The richest polynomial of all inputs with at most half as many coefficients as designs: order 2
  /// with interactions, order 2, order 1, or order 1 in the inputs of the largest correlations.
  RegressionScreening(const ResponseData& data, bool adjusted);

  /// Inputs that are left.
  const math::metamodel::BitVector& GetInputs() const { return inputs_; }
  /// Explained share of the variance, adjusted for the number of coefficients if asked for.
  double GetDetermination() const { return Determination(sse_, GetNumberTerms()); }
  /// How much less would be explained without each input; 0 for inputs that are not left.
  Eigen::VectorXd GetLosses() const;
  /// Takes an input away.
  void Remove(std::size_t input);

 private:
  struct Term {
    std::size_t first;
    std::size_t second;  ///< for a square or a product; otherwise the number of inputs
    bool Has(std::size_t input) const { return first == input || second == input; }
  };

  Eigen::Index GetNumberTerms() const { return normal_.rows(); }
  double Determination(double sse, Eigen::Index num_terms) const;
  std::vector<Eigen::Index> TermsWith(std::size_t input) const;
  void Solve();

  double num_points_;
  bool adjusted_;
  double sst_;
  double sse_ = 0.0;
  math::metamodel::BitVector inputs_;
  std::vector<Term> terms_;  ///< of the columns behind the constant
  Eigen::MatrixXd normal_;   ///< X'X over n, the constant first
  Eigen::VectorXd right_;    ///< X'y over n, y about its mean
  Eigen::MatrixXd inverse_;  ///< of normal_
  Eigen::VectorXd coefficients_;
};

}  // namespace corvath::training
