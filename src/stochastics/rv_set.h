#pragma once

#include "archive/serialization.h"
#include "stochastics/random_variable.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace corvath::algorithm {

/// n random variables with a joint model: joint density and distribution, and the map between the
/// variables' own space and the space of independent standard normal variables. Sample matrices
/// have one row per variable and one column per sample. Failures are corvath::utils::runtime_error.
class RVSet {
 public:
  enum Kind : int { kIndependent = 0, kNataf = 1 };

  virtual ~RVSet();
  /// Correlation of the physical variables, as given.
  virtual Eigen::MatrixXd GetCorrelationMatrix() const;
  /// Correlation of the standard normal variables that realises it.
  virtual Eigen::MatrixXd GetStandardCorrelationMatrix() const;
  /// Joint density and distribution function at a point of n values.
  virtual double PDF(const Eigen::VectorXd& x) const;
  virtual double CDF(const Eigen::VectorXd& x) const;
  /// Independent standard normal samples of physical ones, n x m, and back. A state of a discrete
  /// variable goes to the middle of its step of probability.
  virtual Eigen::MatrixXd ToStandardGauss(const Eigen::MatrixXd& x) const;
  virtual Eigen::MatrixXd FromStandardGauss(const Eigen::MatrixXd& u) const;
  /// Correlated standard normal samples of independent ones, n x m.
  virtual Eigen::MatrixXd CorrelateStandardGauss(const Eigen::MatrixXd& u) const;
  /// A copy that owns clones of the variables.
  virtual boost::shared_ptr<RVSet> Clone() const = 0;
  virtual int GetKind() const = 0;  ///< one of Kind
  /// @param matrix  n x n, correlation of the physical variables in the order of GetRVs()
  virtual void SetCorrelationMatrix(const Eigen::MatrixXd& matrix) = 0;

  /// Appends the variable itself, not a copy, and returns the new number of variables.
  std::size_t AddRV(const boost::shared_ptr<RV>& variable);
  const std::vector<boost::shared_ptr<RV>>& GetRVs() const { return RVs; }
  std::size_t GetNumRVs() const { return RVs.size(); }
  const std::wstring& GetIdent() const { return Ident; }

 protected:
  explicit RVSet(const std::wstring& ident) : Ident(ident) {}
  RVSet(const RVSet&) = default;
  RVSet& operator=(const RVSet&) = default;

  /// Puts clones in the place of the variables; a copied set does this once.
  void CloneVariables();
  Eigen::Index Size() const { return static_cast<Eigen::Index>(RVs.size()); }
  double ProductOfDensities(const Eigen::VectorXd& x) const;

  // The keys of the persisted form are the members' names.
  std::wstring Ident;
  Eigen::MatrixXd Correlation_matrix;
  Eigen::MatrixXd m_c_sq;      ///< symmetric square root of the adjusted correlation matrix
  Eigen::MatrixXd m_c_sq_inv;  ///< its inverse
  double Correlation_determinant = 1.0;  ///< of the adjusted correlation matrix
  std::vector<boost::shared_ptr<RV>> RVs;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// Independent variables.
class RVSet_Independent : public RVSet {
 public:
  RVSet_Independent() : RVSet(L"Independent set") {}
  Eigen::MatrixXd GetCorrelationMatrix() const override;
  Eigen::MatrixXd GetStandardCorrelationMatrix() const override;
  boost::shared_ptr<RVSet> Clone() const override;
  int GetKind() const override { return kIndependent; }
  /// @throws corvath::utils::runtime_error always
  void SetCorrelationMatrix(const Eigen::MatrixXd& matrix) override;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

/// Makes sets by kind: one prototype per kind, built once.
class RVSetFactory {
 public:
  static RVSetFactory& GetInstance();  ///< the one of the process; threads may share it
  /// An empty set. @param kind  one of RVSet::Kind
  /// @throws corvath::utils::runtime_error  an unknown kind
  boost::shared_ptr<RVSet> Create(int kind) const;

 private:
  RVSetFactory();

  std::map<int, boost::shared_ptr<RVSet>> prototypes_;
};

}  // namespace corvath::algorithm

ZEL_EXPORT_KEY(corvath::algorithm::RVSet_Independent, "corvath::algorithm::RVSet_Independent")
