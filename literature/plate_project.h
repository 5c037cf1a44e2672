#pragma once

#include "literature/plate_formulas.h"
#include "project/models/surrogate_info_container.h"
#include "project/vrdb.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

/// A small project in memory whose responses are polynomials, so that its models predict them to
/// rounding and every expected number has a closed form.
namespace literature {

/// The inputs in their order: x in [0, 2], y in [-1, 1], a third with a non-ASCII name in [10, 20].
extern const std::vector<std::wstring> kPlateInputs;

/// The responses that have models, as the library publishes them: two scalars, then the elements of
/// a vector.
extern const std::vector<std::wstring> kPlateOutputs;

/// The derivatives of output `k`; the outputs are those of PlateOutput.
Eigen::RowVector3d PlateGradient(std::size_t k, double x, double y, double z);

/// 40 designs; among them the corners, so that the bounds of the data are those of the inputs.
Eigen::MatrixXd PlateDesigns();

/// Record of a linear regression of order 2 on `points`, a column per input of kPlateInputs.
corvath::algorithm::datatypes::SurrogateInfo MakeRegression(
    corvath::algorithm::datatypes::SurrogateInfo info, const Eigen::MatrixXd& points,
    const Eigen::VectorXd& values, const std::vector<bool>& subspace);

/// The project, of algorithm type 18 over deterministic parameters. Beside inputs and outputs:
///  - a constant parameter "thickness" and a dependent one "sum", of which the second has bounds in
///    the data, and neither is an input;
///  - responses without models: a scalar "unmodelled", a signal "history", a 2 x 2 matrix "tensor";
///  - criteria "goal" (type 1, right side "mass") and "limit" (type 6, "stress[0]" below "3").
/// The reference values are 1, 0 and 15. "flat", the second output, uses x alone.
corvath::algorithm::datatypes::VRDB MakePlateProject();

/// The models of the project.
corvath::algorithm::datatypes::SurrogateInfoContainer& GetModels(
    corvath::algorithm::datatypes::VRDB& project);

/// Leaves the models of these outputs alone.
void KeepModels(corvath::algorithm::datatypes::VRDB& project,
                const std::vector<std::wstring>& outputs);

/// Gives an output another model, which may be null.
void SetModel(corvath::algorithm::datatypes::VRDB& project, const std::wstring& output,
              const corvath::algorithm::datatypes::SurrogateInfo::SurrogatePointer& model);

}  // namespace literature
