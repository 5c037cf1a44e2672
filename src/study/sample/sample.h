#pragma once

#include "doe/doe.h"
#include "study/sample/sample_inputs.h"
#include "study/wording.h"

#include <Eigen/Core>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace corvath::study {

struct SampleRequest {
  std::string scheme;                ///< its name, or the beginning that no other name has
  std::uint64_t n = 0;               ///< number of points, levels or degree, as the scheme wants it
  std::uint32_t seed = 1;            ///< of the random schemes
  Wording wording = Wording::kKeys;  ///< of messages
};

/// What a scheme may be, in full.
std::vector<std::string> SchemeNames();

/// Points of a sampling scheme in the units of the inputs.
class Sample {
 public:
  /// @throws Refusal, std::exception  no such scheme, or it does not fit the inputs
  Sample(const SampleRequest& request, SampleInputs inputs);

  const SampleInputs& GetInputs() const { return inputs_; }
  std::string GetScheme() const;
  std::size_t GetSize() const { return points_.GetDesigns().size(); }
  /// `count` points from the one at `first`: count x m.
  Eigen::MatrixXd GetPoints(std::size_t first, std::size_t count) const;

 private:
  std::int32_t type_;
  SampleInputs inputs_;
  math::DOE points_;
};

}  // namespace corvath::study
