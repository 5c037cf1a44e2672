#pragma once

#include <exception>
#include <string>
#include <typeinfo>

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

/// The same, where the exception must be an E itself, no class derived from it; otherwise a note
/// that no expected text equals.
template <class E, class Action>
std::string MessageOfExactly(Action&& action) {
  try {
    action();
  } catch (const std::exception& error) {
    if (typeid(error) == typeid(E)) return error.what();
    return std::string("<another exception, ") + typeid(error).name() + ": " + error.what() + ">";
  }
  return "<no exception>";
}

}  // namespace support

/// Expects that an expression, which may hold commas, throws an E itself with that text.
#define EXPECT_ERROR(E, text, ...) \
  EXPECT_EQ(support::MessageOfExactly<E>([&] { (void)(__VA_ARGS__); }), text)
/// The same of any std::exception; "" where it throws none.
#define EXPECT_MESSAGE(text, ...) EXPECT_EQ(support::MessageOf([&] { (void)(__VA_ARGS__); }), text)
