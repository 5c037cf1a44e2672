#pragma once

#include "study/project/project.h"

#include <Eigen/Core>

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

  /// Counts the values outside of the project's designs (to within the library's tolerance).
  /// @param refuse  called with the first value that is refused: row, column, and why; throws
  void Count(const Project::Points& designs,
             const std::function<void(std::size_t, std::size_t, const std::string&)>& refuse);

  /// Designs outside, of each input.
  const std::vector<std::uint64_t>& GetNumOutside() const { return num_outside_; }

 private:
  std::vector<Bounds> bounds_;
  std::vector<Bounds> reach_;  ///< at least the bounds
  std::vector<std::uint64_t> num_outside_;
};

/// A quantity of one output beside its predictions.
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
  bool refused_ = false;
};

}  // namespace corvath::study
