#pragma once

#include "design/criterion.h"
#include "metamodel/types.h"
#include "stochastics/random_variable.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace corvath::analysis {

using math::metamodel::ConstPoints;

/// One input of a study.
struct StudyInput {
  std::wstring name;
  /// The range in which it may be moved: of its domain, else of the analysed designs; infinite
  /// where neither is known.
  double lower = -std::numeric_limits<double>::infinity();
  double upper = std::numeric_limits<double>::infinity();
  std::vector<double> states;  ///< of a discrete input, ascending, as models take them; else empty
  double reference = std::numeric_limits<double>::quiet_NaN();  ///< nominal value; NaN: none
  boost::shared_ptr<algorithm::RV> variable;  ///< how it scatters; null: no distribution is known

  bool IsDiscrete() const { return !states.empty(); }
  /// Ends of what the input can be at all: of its distribution's support, else lower and upper.
  double GetHardLower() const { return variable ? variable->GetLowerBound() : lower; }
  double GetHardUpper() const { return variable ? variable->GetUpperBound() : upper; }
};

/// One scalar that is known at each design.
struct StudyQuantity {
  enum class Kind {
    kResponse,  ///< predicted by a model
    kValue,     ///< a criterion without a limit
    kLimit      ///< a criterion that is violated where its value is negative
  };

  std::wstring name;
  Kind kind = Kind::kResponse;
  std::optional<algorithm::datatypes::CriterionDescription> description;  ///< of a criterion
  double cop = std::numeric_limits<double>::quiet_NaN();  ///< of a response's model; NaN: unknown

  bool IsLimit() const { return kind == Kind::kLimit; }
};

/// Designs that were really analysed.
struct StudyDesigns {
  std::vector<std::wstring> numbers;  ///< N: "17"
  Eigen::MatrixXd inputs;             ///< N x m
  Eigen::MatrixXd values;             ///< N x q; NaN where a design has no value
};

/// What the analyses know of a study: m inputs, and q quantities of which the first R are responses
/// and the others criteria, as functions of the inputs. Blocks of designs have one row per design
/// and one column per input, in the users' units.
///
/// Threads may share a model, and blocks are worked on by all processors (foundation/parallel.h);
/// values do not depend on the number of threads.
class StudyModel {
 public:
  virtual ~StudyModel();
  StudyModel(const StudyModel&) = delete;
  StudyModel& operator=(const StudyModel&) = delete;

  const std::vector<StudyInput>& GetInputs() const { return inputs_; }
  const std::vector<StudyQuantity>& GetQuantities() const { return quantities_; }
  Eigen::Index GetNumInputs() const { return static_cast<Eigen::Index>(inputs_.size()); }
  Eigen::Index GetNumQuantities() const { return static_cast<Eigen::Index>(quantities_.size()); }
  Eigen::Index GetNumResponses() const { return num_responses_; }
  /// Position of a quantity; nothing for an unknown name.
  std::optional<Eigen::Index> FindQuantity(const std::wstring& name) const;
  std::optional<Eigen::Index> FindInput(const std::wstring& name) const;
  /// m x m: linear correlations of the inputs' distributions, ones on the diagonal.
  const Eigen::MatrixXd& GetCorrelations() const { return correlations_; }

  /// Responses at the rows of `x` (n x m): n x R, NaN where a model fails.
  virtual Eigen::MatrixXd Responses(const ConstPoints& x) const = 0;
  /// Criteria at the rows of `x` where the responses have these values (n x R): n x (q - R), NaN
  /// for one without a number.
  virtual Eigen::MatrixXd Criteria(const ConstPoints& x, const ConstPoints& responses) const = 0;
  /// All quantities at the rows of `x`: n x q.
  Eigen::MatrixXd Evaluate(const ConstPoints& x) const;

  /// Gradients of all quantities at the design `x` (m values): q x m, quantity units per input
  /// unit. Central differences over 1e-4 of each input's range, evaluated as one block; at an end
  /// of the range (GetHardLower, GetHardUpper) differences of the same order to the inside.
  virtual Eigen::MatrixXd Gradients(const Eigen::VectorXd& x) const;

  /// R standard errors of prediction: root mean square of the cross-validated residuals, 0 for what
  /// is exact, NaN where they are not known. May take seconds at the first call.
  virtual Eigen::VectorXd StandardErrors() const = 0;
  /// How far to trust one response at the rows of `x`: n x metamodel::kNumErrorColumns, NaN where
  /// that is not known.
  virtual Eigen::MatrixXd LocalErrors(Eigen::Index response, const ConstPoints& x) const = 0;
  /// The analysed designs; no rows where there are none.
  virtual const StudyDesigns& GetDesigns() const = 0;

 protected:
  StudyModel() = default;

  /// @param correlations  m x m; empty: none
  /// @throws std::logic_error  sizes that do not fit, or a response behind a criterion
  void Describe(std::vector<StudyInput> inputs, std::vector<StudyQuantity> quantities,
                Eigen::MatrixXd correlations);

 private:
  std::vector<StudyInput> inputs_;
  std::vector<StudyQuantity> quantities_;
  Eigen::Index num_responses_ = 0;
  Eigen::MatrixXd correlations_;
};

}  // namespace corvath::analysis
