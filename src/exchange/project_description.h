#pragma once

#include "exchange/scalar_expression.h"

#include <Eigen/Core>

#include <cstdint>
#include <string>
#include <vector>

namespace corvath::exchange {

/// Weight of a support point p seen from a point u, both in the coordinates of a model; s is their
/// squared distance.
struct Kernel {
  enum class Kind {
    kExponential,  ///< exp(sum_j f_j d_j^2), d = u - p; one factor serves all coordinates
    kRegularised,  ///< max(0, (s / squared_radius + 1e-5)^-2 - 1.00001^-2)
    kNodal         ///< exp(f s / t), t the count-th smallest of all s
  };
  Kind kind = Kind::kExponential;
  std::vector<double> factors;  ///< r, or one; of kNodal one; of kRegularised none
  double squared_radius = 0.0;
  std::uint64_t count = 0;  ///< at least 1, at most the number of support points
};

/// A step from what a model computes to the units of the response.
struct BackStep {
  enum class Kind {
    kBoxCox,  ///< (v / k + 1)^k, exp(v) for k = 0
    kScale,   ///< v / scale + offset
    kLimits   ///< at least lower, at most upper; a NaN passes
  };
  Kind kind = Kind::kScale;
  std::int64_t k = 0;
  double scale = 1.0;
  double offset = 0.0;
  double lower = 0.0;  ///< may be infinite, as may the other one
  double upper = 0.0;
};

/// u_j^exponent; j counts the inputs that the model uses.
struct Power {
  std::size_t input;
  std::uint64_t exponent;
};

/// u_i u_j.
struct Product {
  std::size_t first;
  std::size_t second;
};

enum class Family { kPolynomial, kMovingLeastSquares, kKriging, kThinPlateSplines };

/// As descriptions and comments name it.
inline const char* FamilyName(Family family) {
  switch (family) {
    case Family::kPolynomial:
      return "polynomial";
    case Family::kMovingLeastSquares:
      return "moving least squares";
    case Family::kKriging:
      return "kriging";
    case Family::kThinPlateSplines:
      return "thin plate splines";
  }
  return "";
}

/// The local root mean square error of a response, from its residuals e at the support points:
/// sqrt(sum w e^2 / sum w), w = exp(factor s); `everywhere` where the factor is 0.
struct LocalError {
  Eigen::MatrixXd points;  ///< N x r; empty: those of the model
  Eigen::VectorXd residuals;
  double factor = 0.0;
  double everywhere = 0.0;
};

/// One model, free of classes: f(x) = back(g(u)), u_j = x_j scale_j + offset_j of the r inputs that
/// it uses, or a power of that. All numbers are finite.
struct ResponseModel {
  Family family = Family::kPolynomial;
  std::vector<std::size_t> inputs;  ///< r: positions among the inputs of the project
  std::vector<double> scale;        ///< r
  std::vector<double> offset;       ///< r
  /// u_j becomes (u_j^(1 / power) - 1) power, ln u_j for 0. Such models have one input alone.
  bool has_power = false;
  std::int64_t power = 0;
  /// g: of a polynomial its constant term, of kriging the mean, of splines the constant.
  double constant = 0.0;
  /// Of a polynomial: a coefficient for each power, then for each product. Of splines: r.
  std::vector<double> coefficients;
  std::vector<Power> powers;      ///< also the basis of local fits, beside 1
  std::vector<Product> products;  ///< of polynomials alone
  Kernel kernel;                  ///< of moving least squares and kriging
  Eigen::MatrixXd points;         ///< N x r, in the coordinates u; of a polynomial none
  /// N: of kriging and splines the weight of each point, of local fits what they approximate.
  Eigen::VectorXd values;
  bool is_average = false;  ///< moving least squares without basis: a weighted average
  std::vector<BackStep> back;
};

struct ResponseDescription {
  std::string name;
  std::string unit;
  std::string model_name;           ///< "Isotropic Kriging | 0"
  double cop = 0.0;                 ///< NaN where the project has none
  std::vector<double> single_cops;  ///< one for each input of the project, likewise
  ResponseModel model;
  /// One for each input of the project: how far the central differences of gradients go to each
  /// side; 0: the gradient is 0. Empty where the support points are not known.
  std::vector<double> gradient_steps;
  bool has_error = false;
  LocalError error;
};

struct InputDescription {
  std::string name;
  std::string unit;
  double lower = 0.0;  ///< range of the designs; NaN where there is none, as for the others
  double upper = 0.0;
  double reference = 0.0;
  std::vector<double> states;  ///< of a discrete input
};

struct CriterionDescription {
  std::string name;
  std::string text;
  bool is_limit = false;  ///< kept when not negative
  Expression value;
};

/// What cannot be described, and why.
struct LeftOut {
  std::string name;
  std::string reason;
};

/// The models of a project, as plain data that other programs can evaluate. Texts are UTF-8.
struct ProjectDescription {
  std::string name;       ///< the file's name without directory and ending
  std::string signature;  ///< SHA-512 of the file
  std::vector<InputDescription> inputs;
  std::vector<ResponseDescription> responses;
  std::vector<CriterionDescription> criteria;
  std::vector<LeftOut> responses_left_out;
  std::vector<LeftOut> criteria_left_out;
};

}  // namespace corvath::exchange
