#include "api/design_arrays.h"

namespace corvath::zel::api {

InputMatrix RequireInputs(const double* inputs, std::uint64_t inputs_size, std::uint64_t n_designs,
                          std::uint64_t n_inputs) {
  // Both factors come from 32-bit counts: their product fits.
  const std::uint64_t needed = n_designs * n_inputs;
  if (inputs_size < needed)
    throw StatusError(ZEL_BAD_ARGUMENTS,
                      "Error in Zelsolver API: There are too few inputs for the specified amount "
                      "of designs. Is " +
                          std::to_string(inputs_size) + " and should be " + std::to_string(needed) +
                          ".");
  return InputMatrix(RequireArray(inputs, needed, "inputs"), static_cast<Eigen::Index>(n_designs),
                     static_cast<Eigen::Index>(n_inputs));
}

void SplitErrors(const std::vector<double>& groups, double* densities, double* errors) {
  for (auto group = groups.begin(); groups.end() - group >= 5; group += 5) {
    if (errors != nullptr) errors = std::copy(group, group + 4, errors);
    if (densities != nullptr) *densities++ = group[4];
  }
}

}  // namespace corvath::zel::api
