#pragma once

#include "foundation/exception.h"
#include "foundation/text.h"
#include "study/exports/last_error.h"
#include "study/refusal.h"
#include "zelsolver/study.h"

#include <exception>
#include <new>
#include <string>

/// What all exports share.
namespace corvath::study::api {

/// A pointer that the caller passed. @throws Refusal  it is null; `what` names it in the text
template <class T>
T& Require(T* pointer, const char* what) {
  if (pointer == nullptr) throw Refusal(std::string(what) + ": a null pointer");
  return *pointer;
}

/// Runs `body` as one call: empties this thread's last error, and turns whatever `body` throws into
/// a status and the last error. Nothing leaves the frame: a caller in another language could not
/// handle it.
template <class Body>
int Call(const Body& body) noexcept {
  ClearLastError();
  try {
    body();
    return ZELSTUDY_OK;
  } catch (const Cancelled& error) {
    SetLastError(error.what());
    return ZELSTUDY_CANCELLED;
  } catch (const Refusal& error) {
    SetLastError(error.what());
    return ZELSTUDY_REFUSED;
  } catch (const utils::runtime_error& error) {  // the data classes: a project that does not hold
    SetLastError(utils::ToUtf8(error.GetMessage()).c_str());
    return ZELSTUDY_REFUSED;
  } catch (const std::bad_alloc&) {
    SetLastError("out of memory");
    return ZELSTUDY_FAILED;
  } catch (const std::exception& error) {
    SetLastError(utils::ToUtf8(utils::MessageOf(error)).c_str());
    return ZELSTUDY_FAILED;
  } catch (...) {
    SetLastError("unknown exception");
    return ZELSTUDY_FAILED;
  }
}

/// A call that gives a handle out: null until everything has succeeded.
/// @param make  returns a unique_ptr of the handle
template <class Handle, class Make>
int CallFor(Handle** out, const Make& make) noexcept {
  if (out != nullptr) *out = nullptr;
  return Call([&] {
    Require(out, "out");
    *out = make().release();
  });
}

}  // namespace corvath::study::api
