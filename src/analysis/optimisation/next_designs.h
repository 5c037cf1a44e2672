#pragma once

#include "analysis/optimisation/design_task.h"
#include "analysis/optimisation/global_search.h"
#include "analysis/progress.h"

#include <Eigen/Core>

#include <vector>

namespace corvath::analysis {

/// What a design to analyse next is to bring.
enum class NextBy {
  kImprovement,  ///< a better design that keeps the limits
  kError         ///< better models
};

struct NextDesign {
  Eigen::RowVectorXd inputs;
  double gain = 0.0;        ///< expected improvement in the objective's unit, or expected error
  double chance = 1.0;      ///< that it keeps all limits; 1 for kError
  double prediction = 0.0;  ///< of the objective, in the user's sense; NaN for kError
  double novelty = 0.0;     ///< share of the error that is left there, see below: 0 where analysed
};

/// Designs that are worth their analysis, the best first.
///
/// kImprovement: the largest expected improvement on the best analysed design that keeps the limits,
/// times the chance to keep them (D. R. Jones, M. Schonlau, W. J. Welch, "Efficient global
/// optimization of expensive black-box functions", Journal of Global Optimization 13, 1998,
/// pp. 455-492; M. Schonlau's thesis for the limits); where no design keeps them, the chance alone.
/// kError: the largest sum over `responses` of the expected error in units of the response's spread;
/// those whose error is not known are left out.
///
/// The error of any model is 0 at an analysed design and grows to the cross-validated error near the
/// point at the distance that designs have from each other: its share is sqrt(1 - exp(-(d / l)^2)) at
/// distance d from the nearest one, l being the median of their distances. A design that was chosen
/// counts as analysed, with what is predicted for it, for the next one, so that they spread; nearly
/// to repeat an analysed design improves nothing.
///
/// @param responses  for kError
/// @throws AnalysisError  the study has no analysed designs, or values fail everywhere,
///                        no error is known for kError
std::vector<NextDesign> ProposeDesigns(const DesignTask& task, NextBy by,
                                       const std::vector<Eigen::Index>& responses,
                                       Eigen::Index count, const SearchSettings& settings,
                                       const Progress& progress = {});

}  // namespace corvath::analysis
