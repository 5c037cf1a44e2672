#pragma once

#include "metamodel/subspace_results.h"
#include "metamodel/surrogate.h"
#include "project/settings/zel_settings.h"
#include "training/cross_validation.h"

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace corvath::training {

/// Families of models; the numbers are stored with the candidates that were tried.
enum class Family : std::int32_t {
  kRegression = 0,
  kMovingLeastSquares = 1,
  kIsotropicKriging = 2,
  kAnisotropicKriging = 3
};

/// A model before it has inputs.
struct CandidateForm {
  Family family;
  std::uint64_t order;  ///< of the polynomial; 0 for kriging
  bool interactions;
  bool box_cox;
};

/// The forms that the settings allow, the cheapest first; each without Box-Cox transform, then with.
std::vector<CandidateForm> AllowedForms(const math::metamodel::ZELSettings& settings);

/// "Linear Regression of order 2 with interactions, Box-Cox".
std::wstring Describe(const CandidateForm& form);

/// Settings of a form over the inputs of `subspace`. Powers that an input has too few different
/// values for are left out.
boost::shared_ptr<math::metamodel::SurrogateSettingsBase> MakeSettings(
    const CandidateForm& form, const math::metamodel::BitVector& subspace, const ResponseData& data,
    const math::metamodel::ZELSettings& settings);

/// Whether `num_points` designs suffice for the coefficients of a model, by the factors of the
/// settings.
bool IsAffordable(const math::metamodel::SurrogateSettingsBase& model, Family family,
                  Eigen::Index num_points, const math::metamodel::ZELSettings& settings);

/// A new model of the family that `settings` belong to, not built.
boost::shared_ptr<math::metamodel::SurrogateBase> MakeModel(
    const math::metamodel::SurrogateSettingsBase& settings, const Eigen::MatrixXd& points,
    const Eigen::VectorXd& values);

/// The figures of a built model, single CoPs and what is told of test data excepted.
math::metamodel::SubspaceResults Judge(const math::metamodel::SurrogateBase& model, Family family,
                                       const ResponseData& data);

/// Loss of CoP without each input, hyper-parameters and transforms kept: m values, 0 for inputs
/// that the model does not use, NaN where the smaller model cannot be built.
Eigen::VectorXd ComputeSingleCoPs(const math::metamodel::SurrogateBase& model,
                                  const ResponseData& data);

}  // namespace corvath::training
