#pragma once

#include <exception>
#include <string>

namespace support {

/// what() of the std::exception that `action` throws; "" if it throws none.
template <class Action>
std::string MessageOf(Action&& action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "";
}

}  // namespace support
