// Models of every family on small tables, ordinary and wild: they are fitted with any settings, by
// every way there is, asked for all they tell, and copied; a copy predicts the same.

#include "archive/instantiate.h"
#include "archive/portable_iarchive.h"
#include "archive/portable_oarchive.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/ridge_solver.h"
#include "metamodel/surrogate.h"
#include "metamodel/thin_plate_splines.h"
#include "number_source.h"
#include "try.h"

#include <Eigen/Core>
#include <boost/serialization/shared_ptr.hpp>
#include <boost/shared_ptr.hpp>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace corvath::math::metamodel;
using corvath::math::transform::TransformType;
using fuzz::NumberSource;
using fuzz::Try;

struct Table {
  Eigen::MatrixXd points;
  Eigen::VectorXd values;
  IndexVector groups;
};

Table ReadTable(NumberSource& source) {
  const bool wild = source.Byte() % 8 == 0;
  Table table;
  table.points = source.Matrix(source.Size(24), source.Size(3), wild);
  const Eigen::Index n = table.points.rows();
  table.values = source.Matrix(n, 1, wild);
  if (source.Flag()) table.values += (3.0 * table.points.rowwise().sum()).array().sin().matrix();
  if (source.Flag()) table.values = table.values.array().exp().matrix();  // for Box-Cox
  if (source.Byte() % 4 == 0) table.points.col(0).setConstant(table.points(0, 0));
  table.groups.resize(source.Flag() ? n : 0);
  for (std::uint64_t& group : table.groups) group = source.Byte() % 4;
  return table;
}

template <class Settings>
Settings ReadSettings(NumberSource& source, Eigen::Index inputs) {
  Settings settings(static_cast<std::uint64_t>(inputs));
  const auto transform = [&] { return static_cast<TransformType>(source.Byte() % 5); };
  Try([&] { settings.SetCoordTransform(transform()); });
  Try([&] { settings.SetValueTransform(transform()); });
  Try([&] { settings.SetLimitTransform(transform()); });
  if (source.Flag()) settings.SetValueTransformParameter({source.Matrix(1, 1, false)(0), 0.0, 1.0});
  if (source.Flag()) {
    BitVector selection(static_cast<std::size_t>(inputs));
    for (std::size_t i = 0; i < selection.size(); ++i) selection[i] = source.Flag();
    Try([&] { settings.SetVariableSelection(selection); });
  }
  return settings;
}

template <class Settings>
void ReadKernel(NumberSource& source, Eigen::Index inputs, Settings& settings) {
  constexpr KernelType kTypes[] = {KernelType::kConstInflExp, KernelType::kConstInflIsoExp,
                                   KernelType::kConstInflIsoReg, KernelType::kNodalInflExp,
                                   KernelType{7}};
  Try([&] { settings.SetKernelType(kTypes[source.Byte() % std::size(kTypes)]); });
  if (source.Byte() % 4 == 0) return;
  settings.SetKernelParameter(source.Matrix(source.Flag() ? 1 : inputs, 1, false).cwiseAbs() * 4.0);
}

bool AreSame(const Eigen::VectorXd& a, const Eigen::VectorXd& b) {
  return a.size() == b.size() &&
         ((a.array() == b.array()) || (a.array().isNaN() && b.array().isNaN())).all();
}

boost::shared_ptr<SurrogateBase> Stored(const boost::shared_ptr<SurrogateBase>& model) {
  std::stringstream stream;
  {
    corvath::portable_binary_oarchive archive(stream);
    archive << model;
  }
  corvath::portable_binary_iarchive archive(stream);
  boost::shared_ptr<SurrogateBase> result;
  archive >> result;
  return result;
}

void Ask(SurrogateBase& model, const Table& table, NumberSource& source) {
  const Eigen::Index inputs = table.points.cols();
  Eigen::MatrixXd designs = source.Matrix(5, inputs, source.Byte() % 8 == 0);
  designs.row(0) = table.points.row(0);
  model.IsSolvable();
  model.GetName(source.Flag());
  Try([&] { model.GetDescription(); });
  Try([&] {
    model.GetModelFunction(std::vector<std::wstring>(static_cast<std::size_t>(inputs), L"x"));
  });
  Try([&] { model.ApproximateSupportPoints(); });
  Try([&] { model.ApproximateLeaveOneOut(); });
  Try([&] { model.ApproximateCrossValidation(table.groups); });
  Try([&] { model.BuildErrors(table.groups); });
  Try([&] { model.ApproximatePrognosis(); });
  Try([&] { model.ApproximateErrors(designs); });
  Try([&] { model.ApproximateGradients(designs); });
  Try([&] { model.GetNumberCoefficients(); });
  Try([&] { model.GetSettingsBase(); });
  Try([&] {
    const Eigen::VectorXd predicted = model.Approximate(designs);
    const boost::shared_ptr<SurrogateBase> copy(model.Clone());
    if (predicted.allFinite() && !copy->Equals(model)) std::abort();
    for (const auto& same : {copy, Stored(copy)})
      if (!AreSame(same->Approximate(designs), predicted)) std::abort();
  });
}

void TryRidge(LinearRegression& model, const Table& table) {
  IndexVector singles(table.points.rows());
  std::iota(singles.begin(), singles.end(), 0);
  Eigen::VectorXd predicted;
  const RidgePenalty penalty =
      model.BuildOptimalRidge(singles, table.groups.size() > 0 ? table.groups : singles, predicted);
  model.CrossValidateRidge(penalty, singles);
  model.BuildRidge(penalty);
}

void FitRegression(NumberSource& source, const Table& table) {
  auto settings = ReadSettings<LinearRegressionSettings>(source, table.points.cols());
  Try([&] { settings.SetOrder(source.Byte() % 4); });
  LinearRegression model(table.points, table.values, settings);
  if (source.Flag())
    model.Build();
  else if (source.Flag())
    model.BuildBoxCox();
  else
    Try([&] { TryRidge(model, table); });
  Ask(model, table, source);
}

void FitMovingLeastSquares(NumberSource& source, const Table& table) {
  auto settings = ReadSettings<MovingLeastSquaresSettings>(source, table.points.cols());
  ReadKernel(source, table.points.cols(), settings);
  Try([&] { settings.SetOrder(source.Byte() % 4); });
  MovingLeastSquares model(table.points, table.values, settings);
  const std::uint8_t way = source.Byte() % 4;
  if (way == 0) model.BuildOptimal(table.groups);
  if (way == 1) model.BuildBoxCox();
  if (way > 1) model.Build();
  Ask(model, table, source);
  Try([&] { model.ComputeSingleCoPs(table.groups); });
}

void FitKriging(NumberSource& source, const Table& table) {
  auto settings = ReadSettings<OrdinaryKrigingSettings>(source, table.points.cols());
  ReadKernel(source, table.points.cols(), settings);
  settings.SetUseLikelihood(source.Flag());
  settings.SetNugget(source.Flag() ? 1e-4 : source.Matrix(1, 1, false)(0));
  OrdinaryKriging model(table.points, table.values, settings);
  const std::uint8_t way = source.Byte() % 5;
  if (way == 0) model.BuildOptimal(table.groups);
  if (way == 1) model.BuildBoxCox();
  if (way == 2) {
    std::vector<Eigen::Index> rows(static_cast<std::size_t>(table.points.rows()));
    std::iota(rows.begin(), rows.end(), 0);
    model.BuildWithNoise(rows);
  }
  if (way > 2) model.Build();
  Ask(model, table, source);
  Try([&] { model.ApproximateCrossValidationDirect(table.groups); });
  Try([&] { model.ComputeSingleCoPs(table.groups); });
  Try([&] { model.LikelihoodGradient(); });
}

void FitSplines(NumberSource& source, const Table& table) {
  SurrogateTPS model(table.points, table.values);
  model.Build();
  Ask(model, table, source);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  NumberSource source(data, size);
  void (*const fits[])(NumberSource&, const Table&) = {FitRegression, FitMovingLeastSquares,
                                                       FitKriging, FitSplines};
  const auto fit = fits[source.Byte() % 4];
  Try([&] { fit(source, ReadTable(source)); });
  return 0;
}
