#pragma once

#include <vector>

namespace corvath::zel::api {

/// What the `dzel_allocate_and_` functions hand out pointers into, one set for the process. Each
/// buffer holds the result of the last such call, until the next one or Release().
struct ResultBuffers {
  std::vector<double> input_bounds;  ///< of all inputs and of one parameter alike
  std::vector<double> cop_values;
  std::vector<double> solution;
  std::vector<unsigned int> filtered_states;

  void Release() { *this = ResultBuffers(); }
};

ResultBuffers& GetResultBuffers();

}  // namespace corvath::zel::api
