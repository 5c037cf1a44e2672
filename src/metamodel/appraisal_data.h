#pragma once

#include "archive/serialization.h"

#include <Eigen/Core>

#include <limits>

namespace corvath::math::metamodel {

/// Quality figures of one trained model. They are computed when a model is trained and only kept
/// here; NaN stands for a figure that was not computed.
///
/// The coefficient of prognosis (CoP) is a coefficient of determination measured on
/// cross-validated predictions, between 0 and 1; a single CoP is the share of it that one input
/// carries. The vectors have one entry per input of the model, or none.
class AppraisalData {
 public:
  AppraisalData() = default;
  AppraisalData(const AppraisalData&) = default;
  AppraisalData& operator=(const AppraisalData&) = default;
  virtual ~AppraisalData() = default;

  /// The total CoP; an infinite one passes.
  /// @throws corvath::utils::runtime_error "CoP is not valid." for NaN
  double GetCoP() const;
  bool HasCoP() const { return cop_ == cop_; }

  /// Coefficient of determination and its adjusted form, NaN when not computed.
  double GetCoD() const { return cod_; }
  double GetCoDAdjusted() const { return codadj_; }

  /// Whether input `i` has a first order index: false beyond the vector and for NaN.
  bool HasFirstOrderIndex(Eigen::Index i) const;
  /// @throws corvath::utils::runtime_error "First order index is not valid."
  double GetFirstOrderIndex(Eigen::Index i) const;

  /// Whether input `i` has a single CoP: false beyond the vector and for NaN.
  bool HasSingleCoP(Eigen::Index i) const;
  /// @throws corvath::utils::runtime_error "Single CoP is not valid."
  double GetSingleCoP(Eigen::Index i) const;

  void SetCoP(double cop) { cop_ = cop; }
  /// Plain and adjusted; NaN for what is not computed.
  void SetCoD(double cod, double adjusted) {
    cod_ = cod;
    codadj_ = adjusted;
  }
  void SetSingleCoPs(Eigen::VectorXd values) { single_cop_ = std::move(values); }
  void SetFirstOrderIndices(Eigen::VectorXd values) { first_order_indices_ = std::move(values); }

  /// Same figures; two that were not computed are equal.
  friend bool operator==(const AppraisalData& a, const AppraisalData& b);
  friend bool operator!=(const AppraisalData& a, const AppraisalData& b) { return !(a == b); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  double cop_ = std::numeric_limits<double>::quiet_NaN();
  double cod_ = std::numeric_limits<double>::quiet_NaN();
  double codadj_ = std::numeric_limits<double>::quiet_NaN();
  Eigen::VectorXd single_cop_;
  Eigen::VectorXd first_order_indices_;
};

}  // namespace corvath::math::metamodel

ZEL_CLASS_VERSION(corvath::math::metamodel::AppraisalData, 1)
