#pragma once

#include <vector>

namespace corvath::zel::api {

/// What the `dzel_allocate_and_` functions hand out pointers into, one set for each thread: no
/// other thread's call takes away what a pointer points to. Each buffer holds the result of the
/// thread's last such call, until the next one, ReleaseResultBuffers() or the end of the thread.
struct ResultBuffers {
  std::vector<double> input_bounds;  ///< of all inputs and of one parameter alike
  std::vector<double> cop_values;
  std::vector<double> solution;
  std::vector<unsigned int> filtered_states;
};

/// Those of the calling thread. @throws std::bad_alloc
ResultBuffers& GetResultBuffers();

/// Empties those of the calling thread.
void ReleaseResultBuffers() noexcept;

}  // namespace corvath::zel::api
