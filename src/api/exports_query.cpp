#include "api/call_frame.h"
#include "api/result_buffers.h"
#include "foundation/text.h"
#include "solver/zel_solver.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace api = corvath::zel::api;

using corvath::algorithm::datatypes::CDesignEntry;
using corvath::zel::ZELSolver;
using corvath::zel::api::Call;
using corvath::zel::api::Collapse;
using corvath::zel::api::CopyOut;
using corvath::zel::api::FillBuffer;
using corvath::zel::api::GetResultBuffers;
using corvath::zel::api::ProvideSolver;
using corvath::zel::api::RequireArray;
using corvath::zel::api::RequireName;
using corvath::zel::api::StatusError;

namespace {

unsigned int CountOf(std::size_t size) {
  return static_cast<unsigned int>(size);
}

std::vector<unsigned int> Dimensions(const char* path, unsigned int flags, unsigned int dims_size,
                                     const char* hash) {
  std::size_t needed = 0;
  for (const unsigned int bit : {ZEL_INPUTS, ZEL_OUTPUTS, ZEL_CRITERIA})
    if ((flags & bit) != 0) ++needed;
  if (dims_size < needed)
    throw StatusError(ZEL_BAD_ARGUMENTS,
                      "Error in Zelsolver API: The preallocated uint array is too small. Is " +
                          std::to_string(dims_size) + " and should be " + std::to_string(needed) +
                          ".");

  const auto solver = ProvideSolver(path, hash);
  std::vector<unsigned int> dims;
  if ((flags & ZEL_INPUTS) != 0) dims.push_back(CountOf(solver->GetInputNames().size()));
  if ((flags & ZEL_OUTPUTS) != 0) dims.push_back(CountOf(solver->GetOutputNames().size()));
  if ((flags & ZEL_CRITERIA) != 0) dims.push_back(CountOf(solver->GetCriteriaList().size()));
  return dims;
}

std::vector<std::wstring> SelectedNames(ZELSolver& solver, unsigned int flag) {
  switch (flag) {
    case ZEL_INPUTS:
      return solver.GetInputNames();
    case ZEL_OUTPUTS:
      return solver.GetOutputNames();
    case ZEL_CRITERIA: {
      std::vector<std::wstring> names;
      for (const auto& criterion : solver.GetCriteriaList()) names.push_back(criterion.first);
      return names;
    }
    default:
      throw StatusError(ZEL_BAD_ARGUMENTS,
                        "Error in Zelsolver API: Invalid flag set for dzel_getNames.");
  }
}

/// The names with `delimiter` (one NUL if it is empty) between them and two NULs behind.
std::string JoinNames(const std::vector<std::wstring>& names, std::string delimiter) {
  if (delimiter.empty()) delimiter.assign(1, '\0');
  std::string block;
  for (const std::wstring& name : names) {
    if (&name != &names.front()) block += delimiter;
    block += corvath::utils::ToUtf8(name);
  }
  return block.append(2, '\0');
}

/// A copy of `block` that dzel2_free() releases.
char* NewBlock(const std::string& block) {
  void* const memory = std::malloc(block.size());
  if (memory == nullptr) throw std::bad_alloc();
  return std::copy(block.begin(), block.end(), static_cast<char*>(memory)) - block.size();
}

void Names(const char* path, unsigned int flag, char** names, const char* delimiter,
           const char* hash) {
  const auto solver = ProvideSolver(path, hash);
  const auto selected = SelectedNames(*solver, flag);
  const std::string block = JoinNames(selected, delimiter != nullptr ? delimiter : "");
  RequireArray(names, 1, "names");  // before there is a block to leak
  *names = NewBlock(block);
}

/// A bound that is no scalar number has no value that a caller could use.
double BoundOf(const CDesignEntry& entry) {
  return corvath::zel::ScalarNumber(entry).value_or(std::numeric_limits<double>::max());
}

std::vector<double> InputBounds(const char* path, const char* hash) {
  const auto solver = ProvideSolver(path, hash);
  const auto& all_bounds = solver->GetInputBounds();
  std::vector<double> values;
  for (const std::wstring& name : solver->GetInputNames()) {
    const auto found = all_bounds.find(name);
    if (found == all_bounds.end())
      throw std::runtime_error("Input bounds not found for parameter (" +
                               corvath::utils::ToUtf8(name) + ").");
    values.push_back(BoundOf(found->second.first));
    values.push_back(BoundOf(found->second.second));
  }
  if (values.empty()) throw std::runtime_error("Input bounds not found.");
  return values;
}

std::vector<double> ParameterBounds(const char* path, const char* parameter, const char* hash) {
  const auto solver = ProvideSolver(path, hash);
  const auto& all_bounds = solver->GetInputBounds();
  const auto found = all_bounds.find(RequireName(parameter, "parameter name"));
  if (found == all_bounds.end())
    throw std::runtime_error("No Limits for Parameter (" + std::string(parameter) + ") found.");
  return {BoundOf(found->second.first), BoundOf(found->second.second)};
}

double ReferenceValue(const char* path, const char* parameter, const char* hash) {
  const auto solver = ProvideSolver(path, hash);
  const auto* found = solver->GetProject().GetParameterManager().FindParameter(
      RequireName(parameter, "parameter name"));
  if (found == nullptr)
    throw std::runtime_error("Parameter (" + std::string(parameter) + ") not found.");
  return found->GetReferenceValue().ToDouble();
}

std::vector<double> CoPValues(const char* path, const char* response, const char* hash) {
  const auto solver = ProvideSolver(path, hash);
  const auto& info =
      solver->GetSurrogateInfos().GetSurrogateInfo(RequireName(response, "response name"), 0);
  const auto& inputs = solver->GetInputNames();
  std::vector<double> values(inputs.size() + 1, -1.0);
  for (std::size_t i = 0; i < inputs.size(); ++i)
    if (info.HasSingleCoP(inputs[i])) values[i] = info.GetSingleCoP(inputs[i]);
  if (info.GetAppraisalData().HasCoP()) values.back() = info.GetAppraisalData().GetCoP();
  return values;
}

std::vector<unsigned int> FilteredStates(const char* path, const char* response, const char* hash) {
  const auto solver = ProvideSolver(path, hash);
  const auto& info =
      solver->GetSurrogateInfos().GetSurrogateInfo(RequireName(response, "response name"), 0);
  const auto& inputs = solver->GetInputNames();
  std::vector<unsigned int> states(inputs.size() + 1, 0);
  for (std::size_t i = 0; i < inputs.size(); ++i)
    if (info.IsParameterOutsideSubspace(inputs[i])) states[i] = 1;
  if (!info.GetAppraisalData().HasCoP()) states.back() = 1;
  return states;
}

}  // namespace

int dzel2_hasSurrogate_hash(const char* path, const char* hash) {
  return Call([&] { ProvideSolver(path, hash); });
}
int dzel2_hasSurrogate(const char* path) {
  return dzel2_hasSurrogate_hash(path, nullptr);
}
int dzel_hasSurrogate_hash(const char* path, const char* hash) {
  return Collapse(dzel2_hasSurrogate_hash(path, hash));
}
int dzel_hasSurrogate(const char* path) {
  return dzel_hasSurrogate_hash(path, nullptr);
}

int dzel2_getDimensions_hash(const char* path, unsigned int flags, unsigned int* dims,
                             unsigned int dims_size, const char* hash) {
  return Call([&] { CopyOut(Dimensions(path, flags, dims_size, hash), dims, "dimensions"); });
}
int dzel2_getDimensions(const char* path, unsigned int flags, unsigned int* dims,
                        unsigned int dims_size) {
  return dzel2_getDimensions_hash(path, flags, dims, dims_size, nullptr);
}
int dzel_getDimensions_hash(const char* path, unsigned int* n_inputs, unsigned int* n_outputs,
                            const char* hash) {
  return Collapse(Call([&] {
    const auto dims = Dimensions(path, ZEL_INPUTS | ZEL_OUTPUTS, 2, hash);
    RequireArray(n_inputs, 1, "number of inputs");
    *RequireArray(n_outputs, 1, "number of outputs") = dims[1];
    *n_inputs = dims[0];
  }));
}
int dzel_getDimensions(const char* path, unsigned int* n_inputs, unsigned int* n_outputs) {
  return dzel_getDimensions_hash(path, n_inputs, n_outputs, nullptr);
}

int dzel2_getNamesWithDelimiter_hash(const char* path, unsigned int flag, char** names,
                                     const char* delimiter, const char* hash) {
  return Call([&] { Names(path, flag, names, delimiter, hash); });
}
int dzel2_getNamesWithDelimiter(const char* path, unsigned int flag, char** names,
                                const char* delimiter) {
  return dzel2_getNamesWithDelimiter_hash(path, flag, names, delimiter, nullptr);
}
int dzel2_getNames_hash(const char* path, unsigned int flag, char** names, const char* hash) {
  return dzel2_getNamesWithDelimiter_hash(path, flag, names, "", hash);
}
int dzel2_getNames(const char* path, unsigned int flag, char** names) {
  return dzel2_getNames_hash(path, flag, names, nullptr);
}
int dzel_getInputNamesWithDelimiter_hash(const char* path, char** names, const char* delimiter,
                                         const char* hash) {
  return Collapse(dzel2_getNamesWithDelimiter_hash(path, ZEL_INPUTS, names, delimiter, hash));
}
int dzel_getInputNamesWithDelimiter(const char* path, char** names, const char* delimiter) {
  return dzel_getInputNamesWithDelimiter_hash(path, names, delimiter, nullptr);
}
int dzel_getInputNames_hash(const char* path, char** names, const char* hash) {
  return dzel_getInputNamesWithDelimiter_hash(path, names, "", hash);
}
int dzel_getInputNames(const char* path, char** names) {
  return dzel_getInputNames_hash(path, names, nullptr);
}
int dzel_getOutputNamesWithDelimiter_hash(const char* path, char** names, const char* delimiter,
                                          const char* hash) {
  return Collapse(dzel2_getNamesWithDelimiter_hash(path, ZEL_OUTPUTS, names, delimiter, hash));
}
int dzel_getOutputNamesWithDelimiter(const char* path, char** names, const char* delimiter) {
  return dzel_getOutputNamesWithDelimiter_hash(path, names, delimiter, nullptr);
}
int dzel_getOutputNames_hash(const char* path, char** names, const char* hash) {
  return dzel_getOutputNamesWithDelimiter_hash(path, names, "", hash);
}
int dzel_getOutputNames(const char* path, char** names) {
  return dzel_getOutputNames_hash(path, names, nullptr);
}

int dzel2_getInputBounds_hash(const char* path, double* bounds, const char* hash) {
  return Call([&] { CopyOut(InputBounds(path, hash), bounds, "bounds"); });
}
int dzel2_getInputBounds(const char* path, double* bounds) {
  return dzel2_getInputBounds_hash(path, bounds, nullptr);
}
int dzel_getInputBounds_hash(const char* path, double* bounds, const char* hash) {
  return Collapse(dzel2_getInputBounds_hash(path, bounds, hash));
}
int dzel_getInputBounds(const char* path, double* bounds) {
  return dzel_getInputBounds_hash(path, bounds, nullptr);
}
int dzel_allocate_and_getInputBounds_hash(const char* path, double** bounds, const char* hash) {
  return Collapse(Call([&] {
    FillBuffer(GetResultBuffers().input_bounds, bounds, "bounds",
               [&] { return InputBounds(path, hash); });
  }));
}
int dzel_allocate_and_getInputBounds(const char* path, double** bounds) {
  return dzel_allocate_and_getInputBounds_hash(path, bounds, nullptr);
}

int dzel2_getInputBoundsPerParameter_hash(const char* path, const char* parameter, double* bounds,
                                          const char* hash) {
  return Call([&] { CopyOut(ParameterBounds(path, parameter, hash), bounds, "bounds"); });
}
int dzel2_getInputBoundsPerParameter(const char* path, const char* parameter, double* bounds) {
  return dzel2_getInputBoundsPerParameter_hash(path, parameter, bounds, nullptr);
}
int dzel_getInputBoundsPerParameter_hash(const char* path, const char* parameter, double* bounds,
                                         const char* hash) {
  return Collapse(dzel2_getInputBoundsPerParameter_hash(path, parameter, bounds, hash));
}
int dzel_getInputBoundsPerParameter(const char* path, const char* parameter, double* bounds) {
  return dzel_getInputBoundsPerParameter_hash(path, parameter, bounds, nullptr);
}
int dzel_allocate_and_getInputBoundsPerParameter_hash(const char* path, const char* parameter,
                                                      double** bounds, const char* hash) {
  return Collapse(Call([&] {
    FillBuffer(GetResultBuffers().input_bounds, bounds, "bounds",
               [&] { return ParameterBounds(path, parameter, hash); });
  }));
}
int dzel_allocate_and_getInputBoundsPerParameter(const char* path, const char* parameter,
                                                 double** bounds) {
  return dzel_allocate_and_getInputBoundsPerParameter_hash(path, parameter, bounds, nullptr);
}

int dzel2_getReferenceValuePerParameter_hash(const char* path, const char* parameter, double* value,
                                             const char* hash) {
  return Call([&] {
    const double reference = ReferenceValue(path, parameter, hash);
    *RequireArray(value, 1, "reference value") = reference;
  });
}
int dzel2_getReferenceValuePerParameter(const char* path, const char* parameter, double* value) {
  return dzel2_getReferenceValuePerParameter_hash(path, parameter, value, nullptr);
}
int dzel_getReferenceValuePerParameter_hash(const char* path, const char* parameter, double* value,
                                            const char* hash) {
  return Collapse(dzel2_getReferenceValuePerParameter_hash(path, parameter, value, hash));
}
int dzel_getReferenceValuePerParameter(const char* path, const char* parameter, double* value) {
  return dzel_getReferenceValuePerParameter_hash(path, parameter, value, nullptr);
}

int dzel2_getCoPValuesPerResponse_hash(const char* path, const char* response, double* values,
                                       const char* hash) {
  return Call([&] { CopyOut(CoPValues(path, response, hash), values, "CoP values"); });
}
int dzel2_getCoPValuesPerResponse(const char* path, const char* response, double* values) {
  return dzel2_getCoPValuesPerResponse_hash(path, response, values, nullptr);
}
int dzel_getCoPValuesPerResponse_hash(const char* path, const char* response, double* values,
                                      const char* hash) {
  return Collapse(dzel2_getCoPValuesPerResponse_hash(path, response, values, hash));
}
int dzel_getCoPValuesPerResponse(const char* path, const char* response, double* values) {
  return dzel_getCoPValuesPerResponse_hash(path, response, values, nullptr);
}
int dzel_allocate_and_getCoPValuesPerResponse_hash(const char* path, const char* response,
                                                   double** values, const char* hash) {
  return Collapse(Call([&] {
    FillBuffer(GetResultBuffers().cop_values, values, "CoP values",
               [&] { return CoPValues(path, response, hash); });
  }));
}
int dzel_allocate_and_getCoPValuesPerResponse(const char* path, const char* response,
                                              double** values) {
  return dzel_allocate_and_getCoPValuesPerResponse_hash(path, response, values, nullptr);
}

int dzel2_getFilteredStatesPerResponse_hash(const char* path, const char* response,
                                            unsigned int* states, const char* hash) {
  return Call([&] { CopyOut(FilteredStates(path, response, hash), states, "filtered states"); });
}
int dzel2_getFilteredStatesPerResponse(const char* path, const char* response,
                                       unsigned int* states) {
  return dzel2_getFilteredStatesPerResponse_hash(path, response, states, nullptr);
}
int dzel_getFilteredStatesPerResponse_hash(const char* path, const char* response,
                                           unsigned int* states, const char* hash) {
  return Collapse(dzel2_getFilteredStatesPerResponse_hash(path, response, states, hash));
}
int dzel_getFilteredStatesPerResponse(const char* path, const char* response,
                                      unsigned int* states) {
  return dzel_getFilteredStatesPerResponse_hash(path, response, states, nullptr);
}
int dzel_allocate_and_getFilteredStatesPerResponse_hash(const char* path, const char* response,
                                                        unsigned int** states, const char* hash) {
  return Collapse(Call([&] {
    FillBuffer(GetResultBuffers().filtered_states, states, "filtered states",
               [&] { return FilteredStates(path, response, hash); });
  }));
}
int dzel_allocate_and_getFilteredStatesPerResponse(const char* path, const char* response,
                                                   unsigned int** states) {
  return dzel_allocate_and_getFilteredStatesPerResponse_hash(path, response, states, nullptr);
}
