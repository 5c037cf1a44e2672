#include "api/call_frame.h"
#include "api/design_arrays.h"
#include "api/result_buffers.h"
#include "solver/zel_solver.h"

#include <functional>

namespace api = corvath::zel::api;

using corvath::zel::ExtrapolationType;
using corvath::zel::ZELSolver;
using corvath::zel::api::Call;
using corvath::zel::api::Collapse;
using corvath::zel::api::FillBuffer;
using corvath::zel::api::InputMatrix;
using corvath::zel::api::ProvideSolver;
using corvath::zel::api::RequireArray;
using corvath::zel::api::StatusError;

namespace {

ExtrapolationType ToExtrapolationType(bool extrapolate) {
  return extrapolate ? ExtrapolationType::kUnbounded : ExtrapolationType::kDataBounds;
}

/// The blocks of a solution, in the order in which they stand in the caller's array; 0 for one that
/// isn't asked for.
struct BlockSizes {
  BlockSizes(ZELSolver& solver, std::uint64_t n, unsigned int flags) {
    const std::uint64_t outputs = solver.GetOutputNames().size();
    if ((flags & ZEL_SOLVE_RESPONSES) != 0) responses = outputs * n;
    if ((flags & ZEL_SOLVE_CRITERIA) != 0) criteria = solver.GetCriteriaList().size() * n;
    if ((flags & ZEL_SOLVE_DENSITIES) != 0) densities = outputs * n;
    if ((flags & ZEL_SOLVE_ERRORS) != 0) errors = 4 * outputs * n;
  }
  std::uint64_t Total() const { return responses + criteria + densities + errors; }

  std::uint64_t responses = 0;
  std::uint64_t criteria = 0;
  std::uint64_t densities = 0;
  std::uint64_t errors = 0;
};

/// Whether writing to `out` would change inputs that are still to be read.
bool Overlap(const InputMatrix& inputs, const double* out, std::uint64_t out_size) {
  const std::less<const double*> before;
  return before(inputs.data(), out + out_size) && before(out, inputs.data() + inputs.size());
}

/// Writes responses and criteria to `out`.
void Approximate(ZELSolver& solver, const InputMatrix& inputs, ExtrapolationType type,
                 const BlockSizes& sizes, double* out) {
  std::vector<double> undelivered;  // responses that the criteria alone need
  double* responses = out;
  if (sizes.responses == 0 && sizes.criteria > 0) {
    undelivered.resize(solver.GetOutputNames().size() * static_cast<std::size_t>(inputs.rows()));
    responses = undelivered.data();
  }
  if (sizes.responses + sizes.criteria == 0)
    solver.CheckBounds(inputs, type, /*throw_on_error=*/true);
  else
    solver.ApproximateInto(inputs, type, /*throw_on_error=*/true, responses,
                           sizes.criteria > 0 ? out + sizes.responses : nullptr);
}

void Solve(ZELSolver& solver, const InputMatrix& inputs, unsigned int flags, double* out,
           std::uint64_t out_size) {
  const auto type = ToExtrapolationType((flags & ZEL_SOLVE_EXTRAPOLATE) != 0);
  const BlockSizes sizes(solver, static_cast<std::uint64_t>(inputs.rows()), flags);
  const bool approximates = (flags & (ZEL_SOLVE_RESPONSES | ZEL_SOLVE_CRITERIA)) != 0;
  const bool has_errors = (flags & (ZEL_SOLVE_DENSITIES | ZEL_SOLVE_ERRORS)) != 0;

  if (out_size < sizes.Total()) {
    // An input out of bounds is told first, as when the sizes fit. What the sizes don't promise is
    // never computed, nor its memory used.
    if (approximates) solver.CheckBounds(inputs, type, /*throw_on_error=*/true);
    throw StatusError(ZEL_BAD_ARGUMENTS,
                      "Error in Zelsolver API: The preallocated uint array is too small. Is " +
                          std::to_string(out_size) + " and should be " +
                          std::to_string(sizes.Total()) + ".");
  }
  RequireArray(out, sizes.Total(), "output array");
  if (Overlap(inputs, out, sizes.Total())) {
    const Eigen::MatrixXd copy = inputs;
    return Solve(solver, InputMatrix(copy.data(), copy.rows(), copy.cols()), flags, out, out_size);
  }

  if (approximates) Approximate(solver, inputs, type, sizes, out);
  out += sizes.responses + sizes.criteria;
  if (!has_errors) return;

  const auto groups = solver.ErrorsAllResponses(inputs, type, /*throw_on_error=*/true);
  if (groups.size() < 5) throw StatusError(ZEL_FAILED, "Error extracting densities and errors.");
  api::SplitErrors(groups, sizes.densities > 0 ? out : nullptr,
                   sizes.errors > 0 ? out + sizes.densities : nullptr);
}

}  // namespace

int dzel2_solve_hash(const char* path, unsigned int n_designs, const double* inputs,
                     unsigned int inputs_size, unsigned int flags, double* out,
                     unsigned int out_size, const char* hash) {
  return Call([&] {
    const auto solver = ProvideSolver(path, hash);
    const auto matrix =
        api::RequireInputs(inputs, inputs_size, n_designs, solver->GetInputNames().size());
    Solve(*solver, matrix, flags, out, out_size);
  });
}
int dzel2_solve(const char* path, unsigned int n_designs, const double* inputs,
                unsigned int inputs_size, unsigned int flags, double* out, unsigned int out_size) {
  return dzel2_solve_hash(path, n_designs, inputs, inputs_size, flags, out, out_size, nullptr);
}

int dzel_solve_extrapolate_hash(const char* path, unsigned int n_designs, const double* inputs,
                                double* out, unsigned int extrapolate, const char* hash) {
  return Collapse(Call([&] {
    const auto solver = ProvideSolver(path, hash);
    const std::uint64_t n_inputs = solver->GetInputNames().size();
    const auto matrix = api::RequireInputs(inputs, n_inputs * n_designs, n_designs, n_inputs);
    Solve(*solver, matrix, extrapolate != 0 ? 3 : 2, out,
          solver->GetOutputNames().size() * n_designs);
  }));
}
int dzel_solve_extrapolate(const char* path, unsigned int n_designs, const double* inputs,
                           double* out, unsigned int extrapolate) {
  return dzel_solve_extrapolate_hash(path, n_designs, inputs, out, extrapolate, nullptr);
}
int dzel_solve_hash(const char* path, unsigned int n_designs, const double* inputs, double* out,
                    const char* hash) {
  return dzel_solve_extrapolate_hash(path, n_designs, inputs, out, 0, hash);
}
int dzel_solve(const char* path, unsigned int n_designs, const double* inputs, double* out) {
  return dzel_solve_hash(path, n_designs, inputs, out, nullptr);
}

int dzel_allocate_and_solve_extrapolate_hash(const char* path, unsigned int n_designs,
                                             const double* inputs, double** out,
                                             unsigned int extrapolate, const char* hash) {
  return Collapse(Call([&] {
    FillBuffer(api::GetResultBuffers().solution, out, "solution", [&] {
      const auto solver = ProvideSolver(path, hash);
      const std::uint64_t n_inputs = solver->GetInputNames().size();
      const auto matrix = api::RequireInputs(inputs, n_inputs * n_designs, n_designs, n_inputs);
      auto result =
          solver->ApproximateMatrix(matrix, /*with_criteria=*/false,
                                    ToExtrapolationType(extrapolate != 0), /*throw_on_error=*/true);
      if (result.responses.empty())
        throw StatusError(ZEL_FAILED, "Approximation failed. No results returned.");
      return std::move(result.responses);
    });
  }));
}
int dzel_allocate_and_solve_extrapolate(const char* path, unsigned int n_designs,
                                        const double* inputs, double** out,
                                        unsigned int extrapolate) {
  return dzel_allocate_and_solve_extrapolate_hash(path, n_designs, inputs, out, extrapolate,
                                                  nullptr);
}
int dzel_allocate_and_solve_hash(const char* path, unsigned int n_designs, const double* inputs,
                                 double** out, const char* hash) {
  return dzel_allocate_and_solve_extrapolate_hash(path, n_designs, inputs, out, 0, hash);
}
int dzel_allocate_and_solve(const char* path, unsigned int n_designs, const double* inputs,
                            double** out) {
  return dzel_allocate_and_solve_hash(path, n_designs, inputs, out, nullptr);
}
