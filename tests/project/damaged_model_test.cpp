#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/thin_plate_splines.h"
#include "project/models/surrogate_info_container.h"
#include "support/archive_round_trip.h"
#include "support/points.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

// A stored model may be damaged so that it still reads. Whatever it then holds, each use ends in an
// answer or in an exception; sanitizers and the assertions of a debug build watch the rest.

using namespace corvath::algorithm::datatypes;
using namespace corvath::math::metamodel;

namespace {

std::string StoredModels() {
  const Eigen::MatrixXd points = support::UniformPoints(6, 2, 1);
  const Eigen::VectorXd values = support::UniformVector(6, 2);
  OrdinaryKrigingSettings settings(2);
  settings.SetKernelParameter(Eigen::VectorXd::Constant(1, 1.5));
  const auto isotropic = boost::make_shared<OrdinaryKriging>(points, values, settings);
  settings.SetKernelType(KernelType::kConstInflExp);
  settings.SetKernelParameter(Eigen::Vector2d(1.0, 2.0));
  const auto anisotropic = boost::make_shared<OrdinaryKriging>(points, values, settings);
  const auto splines = boost::make_shared<SurrogateTPS>(points, values);
  const auto regression = boost::make_shared<LinearRegression>(points, values);
  SurrogateInfoContainer infos;
  int number = 0;
  for (const boost::shared_ptr<SurrogateBase>& model :
       std::initializer_list<boost::shared_ptr<SurrogateBase>>{isotropic, anisotropic, splines,
                                                               regression}) {
    SurrogateInfo info(L"r" + std::to_wstring(number++));
    info.SetSurrogate(model);
    info.SetParameters({L"a", L"b"}, {true, true});
    infos.AddOrReplace(info);
  }
  infos.BuildAll();
  infos.BuildErrorsAll({}, boost::make_shared<corvath::utils::log::LogDummy>());
  return support::Save(infos);
}

template <class Action>
bool Ends(Action action) {
  try {
    action();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

/// Number of uses that gave an answer.
int UseAll(const SurrogateInfoContainer& infos) {
  const Eigen::MatrixXd x = support::UniformPoints(3, 2, 3);
  const auto log = boost::make_shared<corvath::utils::log::LogDummy>();
  infos.BuildErrorsAll({}, log);
  int answers = 0;
  for (const SurrogateInfo& info : infos.GetSurrogateInfos()) {
    if (!info.GetSurrogate()) continue;
    const SurrogateBase& model = *info.GetSurrogate();
    answers += Ends([&] { model.Approximate(x); });
    answers += Ends([&] { model.ApproximateErrors(x); });
    answers += Ends([&] { model.ApproximateGradients(x); });
    answers += Ends([&] { model.ApproximateLeaveOneOut(); });
    answers += Ends([&] { info.IsParameterOutsideSubspace(L"b"); });
  }
  return answers;
}

}  // namespace

TEST(DamagedModel, EndsInAnAnswerOrAnException) {
  const std::string bytes = StoredModels();
  // Splines have neither errors, gradients nor leave-one-out.
  const int undamaged = UseAll(support::Load<SurrogateInfoContainer>(bytes));
  ASSERT_EQ(undamaged, 4 * 5 - 3);
  std::mt19937 random(5);
  int read = 0;
  int lost = 0;
  for (int trial = 0; trial < 4000; ++trial) {
    std::string damaged = bytes;
    const std::size_t at = random() % damaged.size();
    damaged[at] = static_cast<char>(damaged[at] ^ (1 << random() % 8));
    SurrogateInfoContainer infos;
    if (!Ends([&] { support::LoadInto(damaged, infos, corvath::archive::kSilentOnMismatch); }))
      continue;
    ++read;
    if (UseAll(infos) < undamaged) ++lost;
  }
  // Most bytes belong to numbers, whose damage reads; some of it must be noticed at use.
  EXPECT_GT(read, 1000);
  EXPECT_GT(lost, 0);
}

TEST(DamagedModel, ATruncatedFormIsRefused) {
  const std::string bytes = StoredModels();
  for (std::size_t size = 0; size < bytes.size(); size += 7) {
    SurrogateInfoContainer infos;
    EXPECT_FALSE(Ends([&] { support::LoadInto(bytes.substr(0, size), infos); })) << size;
  }
}
