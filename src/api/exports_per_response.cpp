#include "api/call_frame.h"
#include "api/design_arrays.h"
#include "solver/zel_solver.h"

namespace api = corvath::zel::api;

using corvath::zel::ExtrapolationType;
using corvath::zel::ZELSolver;
using corvath::zel::api::Call;
using corvath::zel::api::Collapse;
using corvath::zel::api::CopyOut;
using corvath::zel::api::InputMatrix;
using corvath::zel::api::ProvideSolver;
using corvath::zel::api::RequireArray;
using corvath::zel::api::RequireName;
using corvath::zel::api::StatusError;

namespace {

void GetPerResponse(ZELSolver& solver, const InputMatrix& inputs, const char* response,
                    unsigned int flags, double* out, std::uint64_t out_size) {
  const std::wstring name = RequireName(response, "response name");
  const auto n = static_cast<std::uint64_t>(inputs.rows());
  const bool has_gradients = (flags & ZEL_RESPONSE_GRADIENTS) != 0;
  const bool has_densities = (flags & ZEL_RESPONSE_DENSITIES) != 0;
  const bool has_errors = (flags & ZEL_RESPONSE_ERRORS) != 0;
  const auto type = (flags & ZEL_RESPONSE_EXTRAPOLATE) != 0 ? ExtrapolationType::kUnbounded
                                                            : ExtrapolationType::kDataBounds;

  const std::uint64_t needed = (has_gradients ? n * static_cast<std::uint64_t>(inputs.cols()) : 0) +
                               (has_densities ? n : 0) + (has_errors ? 4 * n : 0);
  if (out_size < needed)
    throw StatusError(ZEL_BAD_ARGUMENTS,
                      "Error in Zelsolver API: The preallocated response array is too small. Is " +
                          std::to_string(out_size) + " and should be " + std::to_string(needed) +
                          ".");
  RequireArray(out, needed, "output array");

  if (has_gradients)
    out = CopyOut(solver.GradientsPerResponse(name, inputs, type, /*throw_on_error=*/true), out,
                  "output array");
  if (!has_densities && !has_errors) return;

  const auto groups = solver.ErrorsPerResponse(name, inputs, type, /*throw_on_error=*/true);
  if (groups.size() < 5) throw StatusError(ZEL_FAILED, "Error extracting densities and Errors.");
  api::SplitErrors(groups, has_densities ? out : nullptr,
                   has_errors ? out + (has_densities ? n : 0) : nullptr);
}

/// The generation-1 forms: one block, arrays as long as the project's dimensions ask for.
int GetBlock(const char* path, unsigned int n_designs, const double* inputs, const char* response,
             unsigned int block, double* out, std::uint64_t out_size, unsigned int extrapolate,
             const char* hash) {
  return Collapse(Call([&] {
    const auto solver = ProvideSolver(path, hash);
    const std::uint64_t n_inputs = solver->GetInputNames().size();
    const auto matrix = api::RequireInputs(inputs, n_inputs * n_designs, n_designs, n_inputs);
    const unsigned int flags = extrapolate != 0 ? block | ZEL_RESPONSE_EXTRAPOLATE : block;
    GetPerResponse(*solver, matrix, response, flags, out, out_size);
  }));
}

constexpr std::uint64_t kUnchecked = ~std::uint64_t{0};

}  // namespace

int dzel2_get_per_response_hash(const char* path, unsigned int n_designs, const double* inputs,
                                unsigned int inputs_size, const char* response, unsigned int flags,
                                double* out, unsigned int out_size, const char* hash) {
  return Call([&] {
    const auto solver = ProvideSolver(path, hash);
    const auto matrix =
        api::RequireInputs(inputs, inputs_size, n_designs, solver->GetInputNames().size());
    GetPerResponse(*solver, matrix, response, flags, out, out_size);
  });
}
int dzel2_get_per_response(const char* path, unsigned int n_designs, const double* inputs,
                           unsigned int inputs_size, const char* response, unsigned int flags,
                           double* out, unsigned int out_size) {
  return dzel2_get_per_response_hash(path, n_designs, inputs, inputs_size, response, flags, out,
                                     out_size, nullptr);
}

int dzel_gradients_per_response_extrapolate_hash(const char* path, unsigned int n_designs,
                                                 const double* inputs, const char* response,
                                                 double* out, unsigned int extrapolate,
                                                 const char* hash) {
  return GetBlock(path, n_designs, inputs, response, ZEL_RESPONSE_GRADIENTS, out, kUnchecked,
                  extrapolate, hash);
}
int dzel_gradients_per_response_extrapolate(const char* path, unsigned int n_designs,
                                            const double* inputs, const char* response, double* out,
                                            unsigned int extrapolate) {
  return dzel_gradients_per_response_extrapolate_hash(path, n_designs, inputs, response, out,
                                                      extrapolate, nullptr);
}
int dzel_gradients_per_response_hash(const char* path, unsigned int n_designs, const double* inputs,
                                     const char* response, double* out, const char* hash) {
  return dzel_gradients_per_response_extrapolate_hash(path, n_designs, inputs, response, out, 0,
                                                      hash);
}
int dzel_gradients_per_response(const char* path, unsigned int n_designs, const double* inputs,
                                const char* response, double* out) {
  return dzel_gradients_per_response_hash(path, n_designs, inputs, response, out, nullptr);
}

int dzel_errors_per_response_extrapolate_hash(const char* path, unsigned int n_designs,
                                              const double* inputs, const char* response,
                                              double* out, unsigned int extrapolate,
                                              const char* hash) {
  return GetBlock(path, n_designs, inputs, response, ZEL_RESPONSE_ERRORS, out, kUnchecked,
                  extrapolate, hash);
}
int dzel_errors_per_response_extrapolate(const char* path, unsigned int n_designs,
                                         const double* inputs, const char* response, double* out,
                                         unsigned int extrapolate) {
  return dzel_errors_per_response_extrapolate_hash(path, n_designs, inputs, response, out,
                                                   extrapolate, nullptr);
}
int dzel_errors_per_response_hash(const char* path, unsigned int n_designs, const double* inputs,
                                  const char* response, double* out, const char* hash) {
  return dzel_errors_per_response_extrapolate_hash(path, n_designs, inputs, response, out, 0, hash);
}
int dzel_errors_per_response(const char* path, unsigned int n_designs, const double* inputs,
                             const char* response, double* out) {
  return dzel_errors_per_response_hash(path, n_designs, inputs, response, out, nullptr);
}

int dzel_density_per_response_extrapolate_hash(const char* path, unsigned int n_designs,
                                               const double* inputs, const char* response,
                                               double* out, unsigned int out_size,
                                               unsigned int extrapolate, const char* hash) {
  return GetBlock(path, n_designs, inputs, response, ZEL_RESPONSE_DENSITIES, out, out_size,
                  extrapolate, hash);
}
int dzel_density_per_response_extrapolate(const char* path, unsigned int n_designs,
                                          const double* inputs, const char* response, double* out,
                                          unsigned int out_size, unsigned int extrapolate) {
  return dzel_density_per_response_extrapolate_hash(path, n_designs, inputs, response, out,
                                                    out_size, extrapolate, nullptr);
}
int dzel_density_per_response_hash(const char* path, unsigned int n_designs, const double* inputs,
                                   const char* response, double* out, unsigned int out_size,
                                   const char* hash) {
  return dzel_density_per_response_extrapolate_hash(path, n_designs, inputs, response, out,
                                                    out_size, 0, hash);
}
int dzel_density_per_response(const char* path, unsigned int n_designs, const double* inputs,
                              const char* response, double* out, unsigned int out_size) {
  return dzel_density_per_response_hash(path, n_designs, inputs, response, out, out_size, nullptr);
}
