#pragma once

#include "metamodel/regression/linear_regression_settings.h"
#include "metamodel/surrogate.h"

#include <functional>
#include <stdexcept>

namespace support {

/// A model whose answers a test decides. Built from the start, without support points.
class StubSurrogate : public corvath::math::metamodel::SurrogateBase {
 public:
  using ConstPoints = corvath::math::metamodel::ConstPoints;
  using IndexVector = corvath::math::metamodel::IndexVector;
  using SurrogateBase::BuildOptimal;

  std::function<bool()> build = [] { return true; };
  std::function<Eigen::VectorXd(const ConstPoints&)> approximate = [](const ConstPoints& points) {
    return Eigen::VectorXd(Eigen::VectorXd::Zero(points.rows()));
  };
  std::function<bool()> is_available = [] { return true; };
  bool is_built = true;
  bool is_solvable = true;

  bool Build() override { return build(); }
  bool IsSolvable() const override { return is_solvable; }
  bool IsBuilt() const override { return is_built; }
  Eigen::VectorXd Approximate(const ConstPoints& points) const override {
    return approximate(points);
  }
  Eigen::VectorXd ApproximateCrossValidation(const IndexVector&) const override {
    throw std::logic_error("stub: no cross-validation");
  }
  bool BuildOptimal(const IndexVector&) override { return build(); }
  std::wstring GetName(bool) const override { return L"Stub"; }
  corvath::math::metamodel::BitVector GetVariableSelection() const override { return {}; }
  std::uint64_t GetNumberCoefficients() const override { return 0; }
  const corvath::math::metamodel::SurrogateSettingsBase& GetSettingsBase() const override {
    return settings_;
  }
  bool CheckAvailable(const boost::shared_ptr<corvath::utils::log::LogBase>&) override {
    return is_available();
  }
  StubSurrogate* Clone() const override { return new StubSurrogate(*this); }
  void SetSettings(const corvath::math::metamodel::SurrogateSettingsBase&) override {}

 private:
  corvath::math::metamodel::LinearRegressionSettings settings_{1};
};

}  // namespace support
