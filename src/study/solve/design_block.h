#pragma once

#include "study/project/project.h"

#include <Eigen/Core>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace corvath::study {

/// The bounds of a project's inputs as predictions at designs are asked for.
class InputRanges {
 public:
  /// @param extrapolate  nothing is refused
  InputRanges(const Project& project, bool extrapolate);

  /// Adds the number of values outside of the project's designs (to within the library's
  /// tolerance) to `outside`, which is of the length of the inputs.
  /// @param refuse  called with the first value that is refused: row, column, and why; throws
  void Count(const Project::Points& designs, std::vector<std::uint64_t>& outside,
             const std::function<void(std::size_t, std::size_t, const std::string&)>& refuse) const;

 private:
  std::vector<Bounds> bounds_;
  std::vector<Bounds> reach_;  ///< at least the bounds
};

/// A quantity of one output beside its predictions. Threads may share it.
class Extra {
 public:
  enum class Kind { kErrors, kDensity, kGradients };
  static constexpr std::size_t kNumErrors = 4;

  Extra(const Project& project, std::string output, Kind kind);

  const std::string& GetOutput() const { return output_; }
  Kind GetKind() const { return kind_; }
  /// Values per design.
  std::size_t GetWidth() const { return width_; }
  /// n * GetWidth() values, design after design. What the model refuses is NaN, from then on.
  /// @param notes  gets a line the first time
  std::vector<double> Solve(const Project::Points& designs, std::vector<std::string>& notes);

 private:
  const Project& project_;
  std::string output_;
  Kind kind_;
  std::size_t width_;
  std::atomic<bool> is_refused_{false};
};

}  // namespace corvath::study
