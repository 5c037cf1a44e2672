#include "study/describe/residuals.h"

#include "foundation/exception.h"
#include "foundation/text.h"
#include "metamodel/surrogate.h"
#include "project/models/surrogate_info.h"
#include "project/models/surrogate_info_container.h"
#include "solver/zel_solver.h"
#include "study/describe/json_text.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <stdexcept>

namespace corvath::study {
namespace {

using algorithm::datatypes::SurrogateInfo;
using utils::ToUtf8;

/// What the arrays of one output are made from. @throws std::exception  there are no residuals
struct Support {
  explicit Support(const SurrogateInfo& info) {
    const auto& model = info.GetSurrogate();
    if (!model) throw std::runtime_error("there is no model");
    measured = model->GetValues();
    points = model->GetPoints();
    if (measured.size() == 0 || points.rows() != measured.size())
      throw std::runtime_error("the file has no support points of the model");
    predicted = model->ApproximatePrognosis();
    if (predicted.size() != measured.size())
      throw std::runtime_error("the model has no cross-validated predictions");
  }

  Eigen::VectorXd measured;
  Eigen::VectorXd predicted;
  Eigen::MatrixXd points;
};

void Copy(const Eigen::VectorXd& values, NamedArray& array) {
  std::copy(values.begin(), values.end(), array.values.begin());
}

/// The columns of the model by the names of the project's inputs.
void CopyInputs(const Project& project, const SurrogateInfo& info, const Eigen::MatrixXd& points,
                NamedArray& array) {
  const auto names = info.GetParameterNames();
  for (std::size_t i = 0; i < project.GetInputs().size(); ++i) {
    const auto found =
        std::find(names.begin(), names.end(), utils::FromUtf8(project.GetInputs()[i]));
    const auto column = static_cast<Eigen::Index>(found - names.begin());
    for (Eigen::Index d = 0; d < points.rows(); ++d)
      array.values[static_cast<std::size_t>(d) * array.columns + i] =
          column < points.cols() ? points(d, column) : std::nan("");
  }
}

void CopyNumbers(const SurrogateInfo& info, NamedArray& array) {
  const auto& ids = info.GetUsedHids();
  for (std::size_t d = 0; d < array.rows; ++d)
    array.values[d] = info.HasUsedHids() && d < ids.size() ? static_cast<double>(ids[d].GetValue())
                                                           : std::nan("");
}

}  // namespace

Result Residuals(const Project& project, const std::vector<std::string>& outputs) {
  Result result;
  result.document["inputs"] = Json::Value(Json::arrayValue);
  for (const std::string& input : project.GetInputs()) result.document["inputs"].append(input);
  result.document["responses"] = Json::Value(Json::arrayValue);
  for (const std::string& output : outputs) {
    const auto& info =
        project.GetSolver().GetSurrogateInfos().GetSurrogateInfo(utils::FromUtf8(output));
    Json::Value json;
    json["name"] = output;
    std::size_t n = 0;
    json["rmse"] = Json::Value();
    try {
      const Support support(info);
      n = static_cast<std::size_t>(support.measured.size());
      json["rmse"] =
          JsonNumber(std::sqrt((support.measured - support.predicted).array().square().mean()));
      Copy(support.measured, result.Add(output + "/measured", n, 1));
      Copy(support.predicted, result.Add(output + "/predicted", n, 1));
      CopyNumbers(info, result.Add(output + "/designs", n, 1));
      CopyInputs(project, info, support.points,
                 result.Add(output + "/inputs", n, project.GetInputs().size()));
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& error) {
      json["note"] = ToUtf8(utils::MessageOf(error));
      for (const char* part : {"/measured", "/predicted", "/designs"})
        result.Add(output + part, 0, 1);
      result.Add(output + "/inputs", 0, project.GetInputs().size());
    }
    json["designs"] = static_cast<Json::UInt64>(n);
    result.document["responses"].append(json);
  }
  return result;
}

}  // namespace corvath::study
