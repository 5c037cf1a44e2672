#pragma once

#include "design/designs/input_columns.h"
#include "stochastics/rv_set.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

namespace corvath::algorithm::datatypes {

/// The live random variable of a parameter's random side, under the parameter's name. Its mean is
/// the reference value for a mixed parameter, else the first stored moment, if there is one. A
/// coefficient of variation decides first, then the distribution parameters, then the moments.
/// @throws corvath::utils::runtime_error  the type is unknown or refuses the numbers
boost::shared_ptr<RV> ParameterToRV(const Parameter& parameter);

/// Appends the variable of `parameter` to `rvset`.
/// @throws std::runtime_error  the variable cannot be made
void AddParameterToRVSet(RVSet& rvset, const Parameter& parameter);

/// Correlations of `names` in their order: ones on the diagonal, the manager's coherences in both
/// mirrored cells, zeros elsewhere. Coherences of other names are passed over.
/// @throws std::domain_error  the names are not unique
Eigen::MatrixXd BuildCorrelationMatrix(const ParameterManager& manager,
                                       const std::vector<std::wstring>& names);

/// The random variables of a project with their joint model. They stand in this order: those that
/// `design` names, in its order, then the others by name; without a design the mixed parameters,
/// then the stochastic ones, each in the order of the manager. It is not the order of the manager:
/// bring columns to names with GetVariableNames or InputColumns. Constant parameters take no part.
/// @param design  its initialised values become the means
/// @throws std::runtime_error  a variable cannot be made, refuses its mean, or the correlations are
///                             impossible
boost::shared_ptr<RVSet> ParameterManagerToRVSet(const ParameterManager& manager,
                                                 const Design& design);

/// Names of the variables in the order of the set.
std::vector<std::wstring> GetVariableNames(const RVSet& rvset);

/// One row per design, one column per variable in the order of the set.
/// @throws see InputColumns::ToMatrix
Eigen::MatrixXd DesignsToMatrix(const std::vector<Design>& designs, const RVSet& rvset);

/// One parameter sequence per row of a matrix with one column per variable, in the order of the
/// set; every value is REAL.
/// @throws std::runtime_error  another number of columns
std::vector<EntrySequence> MatrixToDesigns(const Eigen::Ref<const Eigen::MatrixXd>& matrix,
                                           const RVSet& rvset);

}  // namespace corvath::algorithm::datatypes
