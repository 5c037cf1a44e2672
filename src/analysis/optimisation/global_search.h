#pragma once

#include "analysis/optimisation/local_search.h"

#include <Eigen/Core>

#include <cstdint>
#include <functional>
#include <vector>

namespace corvath::analysis {

struct SearchSettings {
  Eigen::Index num_sample = 0;     ///< space-filling points to start from; 0: by the inputs
  Eigen::Index max_searches = 40;  ///< local searches from the sample, at most
  std::uint32_t seed = 1;
  /// Told the share of the work that is done, from the calling thread; what it throws ends the
  /// search.
  std::function<void(double share)> progress;
};

/// A program over a sample of its space: where searches start.
struct Screening {
  Eigen::MatrixXd points;  ///< the given ones first, each once, then a Latin hypercube
  Eigen::MatrixXd values;
  Eigen::VectorXd scales;  ///< see ColumnScales
};

/// @param given  points to look at besides, n columns; brought to bounds and states
Screening Screen(const NonlinearProgram& program, const Eigen::MatrixXd& given,
                 const SearchSettings& settings);

struct GlobalOptimum {
  LocalOptimum best;
  Eigen::Index num_searches = 0;
  Eigen::Index num_optima = 0;  ///< different ones that keep the limits; a flat one counts once
  Eigen::MatrixXd extent;       ///< 2 x n: corners of the box in which searches found one as good
  Eigen::Index num_finite = 0;  ///< points of the screening where all values are numbers
};

/// The best of local searches from the most promising points of a screening: first those better than
/// all points around them, as in A. H. G. Rinnooy Kan, G. T. Timmer, "Stochastic global optimization
/// methods, part II: multi level methods", Mathematical Programming 39, 1987, pp. 57-78. They end
/// when the number of different optima that one must expect, after C. G. E. Boender and
/// Rinnooy Kan (w (k - 1) / (k - w - 2) for w of k searches), is less than a half above the number
/// found. Where that number is not reached by the largest number of searches, there are more minima
/// than starts: populations go on from the best starts (see SearchByPopulations) until
/// 100 n max_searches evaluations are used, and searches from the best points of these follow. While
/// no point keeps the limits, what counts are points of the least breach. Searches
/// of one batch run at once; results do not depend on the number of threads.
GlobalOptimum SearchGlobally(const NonlinearProgram& program, const SqpForm& form,
                             const Screening& screening, const SearchSettings& settings);

}  // namespace corvath::analysis
