#include "truss_optimum.h"

#include "ten_bar_truss.h"
#include "truss_study.h"

#include <gtest/gtest.h>

namespace {

/// Ten areas between the bounds of the study.
sample_projects::AreaBounds Bounds() {
  return {Eigen::VectorXd::Constant(sample_projects::kNumBars, sample_projects::kSmallestArea),
          Eigen::VectorXd::Constant(sample_projects::kNumBars, sample_projects::kLargestArea)};
}

sample_projects::TrussResponse Analyse(const Eigen::RowVectorXd& areas,
                                       std::array<double, 2> loads) {
  sample_projects::Truss truss;
  truss.loads = loads;
  for (std::size_t i = 0; i < truss.areas.size(); ++i)
    truss.areas[i] = areas(static_cast<Eigen::Index>(i));
  return sample_projects::AnalyseTenBarTruss(truss);
}

TEST(TrussOptimum, MeetsTheOptimalityCriterionOfTheDisplacementLimit) {
  corvath::algorithm::optimizer::OptimizerNLPQLP<double> optimizer;
  int num_iterates = 0;
  const sample_projects::TrussIterate optimum =
      sample_projects::MinimiseMass(optimizer, Bounds(), sample_projects::AnalyseDesigns,
                                    [&](const sample_projects::TrussIterate&) { ++num_iterates; });
  EXPECT_TRUE(optimizer.IsConverged());
  EXPECT_GT(num_iterates, 5);
  const Eigen::RowVectorXd areas = optimum.areas;
  const auto real = Analyse(areas, {100.0, 100.0});
  EXPECT_NEAR(real.displacement, sample_projects::kLargestDisplacement, 1e-6);
  EXPECT_LT(sample_projects::LargestExcess(optimum.responses).first, 1e-6);

  // Virtual work: with the forces f_i of a unit load at the outer lower node, where the truss sinks
  // the most, d(displacement) / d(area_i) = -stress_i f_i L_i / (E area_i), f_i / area_i being the stress of the unit load. With the mass rho L_i of
  // a unit of area, virtual work per mass is the same in all bars between the bounds, smaller at
  // lower and larger at upper bounds: Venkayya's optimality criterion.
  const auto virtual_work = Analyse(areas, {1.0, 0.0});
  const auto is_free = [&](Eigen::Index i) {
    return areas(i) > sample_projects::kSmallestArea + 1e-6 &&
           areas(i) < sample_projects::kLargestArea - 1e-6;
  };
  const auto ratio = [&](Eigen::Index i) {
    return real.stresses[std::size_t(i)] * virtual_work.stresses[std::size_t(i)];
  };
  double common = 0.0;
  int num_free = 0;
  for (Eigen::Index i = 0; i < areas.size(); ++i)
    if (is_free(i)) common += ratio(i), ++num_free;
  ASSERT_GE(num_free, 3);
  common /= num_free;
  for (Eigen::Index i = 0; i < areas.size(); ++i) {
    SCOPED_TRACE("bar " + std::to_string(i + 1) + ", area " + std::to_string(areas(i)));
    // Differences of 0.01 in^2 move the optimum by less than 1e-4 of these.
    if (is_free(i)) {
      EXPECT_NEAR(ratio(i), common, 1e-3 * common);
    } else {
      EXPECT_EQ(ratio(i) > common, areas(i) > 0.5 * sample_projects::kLargestArea);
    }
  }
}

}  // namespace
