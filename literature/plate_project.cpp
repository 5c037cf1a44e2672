#include "literature/plate_project.h"

#include "metamodel/regression/linear_regression.h"
#include "project/records/algorithm_info.h"
#include "project/records/zel_information.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>
#include <random>

namespace literature {
namespace {

using corvath::algorithm::datatypes::AlgorithmInfo, corvath::algorithm::datatypes::CDesignEntry,
    corvath::algorithm::datatypes::Criterion, corvath::algorithm::datatypes::CriterionDescription,
    corvath::algorithm::datatypes::Design, corvath::algorithm::datatypes::DesignId,
    corvath::algorithm::datatypes::DeterministicProperties,
    corvath::algorithm::datatypes::EntrySequence, corvath::algorithm::datatypes::Parameter,
    corvath::algorithm::datatypes::SurrogateInfo,
    corvath::algorithm::datatypes::SurrogateInfoContainer, corvath::algorithm::datatypes::VRDB;
using corvath::math::Value, corvath::math::metamodel::LinearRegression,
    corvath::math::metamodel::LinearRegressionSettings;

const Eigen::RowVector3d kLower(0.0, -1.0, 10.0);
const Eigen::RowVector3d kUpper(2.0, 1.0, 20.0);
constexpr Eigen::Index kNumDesigns = 40;

Parameter MakeParameter(const std::wstring& name, double lower, double upper, double reference) {
  Parameter parameter(name);
  parameter.SetDeterministicProperty(DeterministicProperties::Continuous(lower, upper));
  parameter.SetReferenceValue(CDesignEntry(reference), /*convert=*/false);
  return parameter;
}

Value::Vector VectorOf(const std::vector<double>& entries) {
  Value::Vector vector(entries.size());
  std::copy(entries.begin(), entries.end(), vector.begin());
  return vector;
}

/// Two columns.
Value::Matrix MatrixOf(std::size_t rows, const std::vector<double>& entries) {
  Value::Matrix matrix(rows, 2);
  std::copy(entries.begin(), entries.end(), matrix.data().begin());
  return matrix;
}

Design MakeDesign(const Eigen::RowVector3d& point, std::uint64_t number) {
  EntrySequence parameters;
  for (std::size_t i = 0; i < kPlateInputs.size(); ++i)
    parameters.Append(kPlateInputs[i], CDesignEntry(point(static_cast<Eigen::Index>(i))));
  parameters.Append(L"thickness", CDesignEntry(3.0));
  parameters.Append(L"sum", CDesignEntry(point(0) + point(1)));

  const auto output = [&](std::size_t k) { return PlateOutput(k, point(0), point(1), point(2)); };
  EntrySequence responses;
  responses.Append(L"mass", CDesignEntry(Value(output(0), 0.0)));
  responses.Append(L"unmodelled", CDesignEntry(7.0));
  responses.Append(L"flat", CDesignEntry(output(1)));
  responses.Append(L"stress", CDesignEntry(Value(VectorOf({output(2), output(3), output(4)}))));
  responses.Append(L"history",
                   CDesignEntry(Value::Signal(VectorOf({0.0, 1.0}), MatrixOf(1, {2.0, 3.0}))));
  responses.Append(L"tensor", CDesignEntry(Value(MatrixOf(2, {1.0, 2.0, 3.0, 4.0}))));

  Design design(std::move(parameters), DesignId(number));
  design.SetResponses(std::move(responses));
  design.SetCriteria(
      {{L"goal", Criterion(CriterionDescription::RHS, L"", L"mass")},
       {L"limit", Criterion(CriterionDescription::LIMIT_LHS_BELOW_RHS, L"stress[0]", L"3")}});
  return design;
}

SurrogateInfo MakeRecord(std::size_t k) {
  if (k < 2) return SurrogateInfo(kPlateOutputs[k]);
  return SurrogateInfo(L"stress", k - 2);
}

}  // namespace

const std::vector<std::wstring> kPlateInputs{L"x", L"y", L"Gr\u00f6\u00dfe"};
const std::vector<std::wstring> kPlateOutputs{L"mass", L"flat", L"stress[0]", L"stress[1]",
                                              L"stress[2]"};

Eigen::RowVector3d PlateGradient(std::size_t k, double x, double y, double z) {
  const Eigen::RowVector3d gradients[] = {{2.0, -3.0, 0.5},
                                          {-1.0, 0.0, 0.0},
                                          {2.0 * x, 1.0, 0.0},
                                          {y, x, -1.0},
                                          {-z, 0.0, 0.2 * z - x}};
  return gradients[k];
}

Eigen::MatrixXd PlateDesigns() {
  std::mt19937 random(7);
  Eigen::MatrixXd points(kNumDesigns, 3);
  for (Eigen::Index d = 0; d < kNumDesigns; ++d)
    for (Eigen::Index i = 0; i < 3; ++i)
      points(d, i) =
          kLower(i) + (kUpper(i) - kLower(i)) * (static_cast<double>(random()) / 4294967295.0);
  points.row(0) = kLower;
  points.row(1) = kUpper;
  return points;
}

SurrogateInfo MakeRegression(SurrogateInfo info, const Eigen::MatrixXd& points,
                             const Eigen::VectorXd& values, const std::vector<bool>& subspace) {
  LinearRegressionSettings settings(3);
  settings.SetOrder(2);
  settings.SetVariableSelection(subspace);
  const auto model = boost::make_shared<LinearRegression>(points, values, settings);
  model->Build();
  info.SetSurrogate(model);
  info.SetParameters(kPlateInputs, subspace);
  return info;
}

VRDB MakePlateProject() {
  VRDB project;
  auto& parameters = project.GetParameterManager();
  parameters.AddParameter(MakeParameter(kPlateInputs[0], 0.0, 2.0, 1.0));
  Parameter thickness = MakeParameter(L"thickness", 1.0, 5.0, 3.0);
  thickness.SetConst(true);
  parameters.AddParameter(thickness);
  parameters.AddParameter(MakeParameter(kPlateInputs[1], -1.0, 1.0, 0.0));
  Parameter sum = MakeParameter(L"sum", -1.0, 3.0, 1.0);
  sum.SetDependencyExpression(L"x+y");
  parameters.AddParameter(sum);
  parameters.AddParameter(MakeParameter(kPlateInputs[2], 10.0, 20.0, 15.0));

  const Eigen::MatrixXd points = PlateDesigns();
  SurrogateInfo::HidVector ids;
  for (Eigen::Index d = 0; d < points.rows(); ++d) {
    ids.emplace_back(static_cast<std::uint64_t>(d) + 1);
    project.GetDesignContainer().Add(MakeDesign(points.row(d), ids.back().GetValue()));
  }

  project.GetAlgorithmInfo() = boost::make_shared<AlgorithmInfo>(AlgorithmInfo::kZEL);
  const auto detail = project.GetAlgorithmInfo()->GetZELInformation();
  detail->SetSamplingType(1);
  for (std::size_t k = 0; k < kPlateOutputs.size(); ++k) {
    Eigen::VectorXd values(points.rows());
    for (Eigen::Index d = 0; d < points.rows(); ++d)
      values(d) = PlateOutput(k, points(d, 0), points(d, 1), points(d, 2));
    const std::vector<bool> subspace =
        k == 1 ? std::vector<bool>{true, false, false} : std::vector<bool>(3, true);
    SurrogateInfo info = MakeRegression(MakeRecord(k), points, values, subspace);
    corvath::math::metamodel::AppraisalData quality;
    const double nan = std::nan("");
    if (k != 4) quality.SetCoP(0.9);
    quality.SetSingleCoPs(k == 1 ? Eigen::Vector3d(0.9, nan, nan) : Eigen::Vector3d(0.5, 0.3, 0.1));
    info.SetAppraisalData(quality);
    info.SetUsedHids(ids);
    detail->surrogate_infos_.AddOrReplace(std::move(info));
  }
  return project;
}

SurrogateInfoContainer& GetModels(VRDB& project) {
  return project.GetAlgorithmInfo()->GetZELInformation()->surrogate_infos_;
}

void KeepModels(VRDB& project, const std::vector<std::wstring>& outputs) {
  SurrogateInfoContainer kept;
  for (const SurrogateInfo& info : GetModels(project).GetSurrogateInfos())
    if (std::count(outputs.begin(), outputs.end(), info.GetFullName()) > 0) kept.AddOrReplace(info);
  GetModels(project) = kept;
}

void SetModel(VRDB& project, const std::wstring& output,
              const SurrogateInfo::SurrogatePointer& model) {
  GetModels(project).Update([&](SurrogateInfo& info) {
    if (info.GetFullName() == output) info.SetSurrogate(model);
  });
}

}  // namespace literature
