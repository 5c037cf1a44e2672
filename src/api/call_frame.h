#pragma once

#include "zelsolver/zelsolver.h"

#include <boost/shared_ptr.hpp>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvath::zel {
class ZELSolver;
class ZELSolverProvider;
}  // namespace corvath::zel

/// What all exports share. Any of them may run on any thread at any time.
namespace corvath::zel::api {

/// The text of the last call's failure: of this thread's last call if that failed, otherwise of the
/// process's last call, as callers see it that take turns on several threads.
void ClearLastError() noexcept;
/// Keeps `text`, or as much as memory allows.
void SetLastError(const char* text) noexcept;
/// Null when there is none; valid until this thread's next Clear, Set or Get.
const char* GetLastError() noexcept;

/// A failure with a status of its own; any other exception is status 2.
class StatusError : public std::runtime_error {
 public:
  StatusError(int status, const std::string& message)
      : std::runtime_error(message), status_(status) {}
  int GetStatus() const { return status_; }

 private:
  int status_;
};

/// Runs `body` as one call: empties the last error, and turns whatever `body` throws into a status
/// and the last-error text. Nothing leaves the frame, also nothing that isn't a std::exception: a
/// caller in another language couldn't handle it.
template <class Body>
int Call(const Body& body) noexcept {
  ClearLastError();
  try {
    body();
    return ZEL_OK;
  } catch (const StatusError& error) {
    SetLastError(error.what());
    return error.GetStatus();
  } catch (const std::exception& error) {
    SetLastError(error.what());
    return ZEL_ERROR;
  } catch (...) {
    SetLastError("Unknown exception.");
    return ZEL_ERROR;
  }
}

/// A status of generation 2 as generation 1 reports it.
constexpr int Collapse(int status) {
  return status == ZEL_OK ? ZEL_OK : ZEL_FAILED;
}

/// The registry of the process, made at the first call; forks wait for it.
ZELSolverProvider& GetSolverProvider();

/// The solver of a path as an export receives it: a null path is "zel_tenbar.vrdb" in the current
/// directory, a null hash is none.
/// @throws std::runtime_error "Providing solver failed.", and see ZELSolverProvider::GetSolver
boost::shared_ptr<ZELSolver> ProvideSolver(const char* path_utf8, const char* hash);

/// Memory of the caller that holds, or is to receive, `size` elements.
/// @throws std::invalid_argument  it is null although `size` isn't 0; `what` names it in the text
template <class T>
T* RequireArray(T* array, std::uint64_t size, const char* what) {
  if (array == nullptr && size > 0)
    throw std::invalid_argument(std::string("Error in Zelsolver API: The pointer to the ") + what +
                                " is null.");
  return array;
}

/// The wide form of a name that the caller passed.
/// @throws std::invalid_argument  it is null; `what` names it in the text
std::wstring RequireName(const char* name_utf8, const char* what);

/// Copies all of `values` to the caller's memory and returns what lies behind them.
template <class T>
T* CopyOut(const std::vector<T>& values, T* out, const char* what) {
  return std::copy(values.begin(), values.end(), RequireArray(out, values.size(), what));
}

/// Hands out a pointer into `buffer`, one of this thread's, after filling it with what `compute`
/// returns. The buffer is empty while that runs, so that a failing call leaves no old result.
template <class T, class Compute>
void FillBuffer(std::vector<T>& buffer, T** out, const char* what, const Compute& compute) {
  buffer.clear();
  std::vector<T> values = compute();
  RequireArray(out, 1, what);
  buffer = std::move(values);
  *out = buffer.data();
}

}  // namespace corvath::zel::api
