#pragma once

// What nearly every test needs beside what it tests.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <typeinfo>
#include <utility>
#include <vector>

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

/// A use, and a part of what it says when it is refused; "" where it is not.
struct Refusal {
  std::function<void()> use;
  std::string says;
};

/// Each use throws an E itself, no class derived from it, with its text.
template <class E>
void ExpectRefusals(std::initializer_list<Refusal> rows) {
  for (const Refusal& row : rows) {
    const std::string message =
        row.says.empty() ? MessageOf(row.use) : MessageOfExactly<E>(row.use);
    EXPECT_TRUE(row.says.empty() ? message.empty() : message.find(row.says) != std::string::npos)
        << "expected: " << row.says << "\ngot: " << message;
  }
}

}  // namespace support

/// Expects that an expression, which may hold commas, throws an E itself with that text.
#define EXPECT_ERROR(E, text, ...) \
  EXPECT_EQ(support::MessageOfExactly<E>([&] { (void)(__VA_ARGS__); }), text)
/// The same of any std::exception; "" where it throws none.
#define EXPECT_MESSAGE(text, ...) EXPECT_EQ(support::MessageOf([&] { (void)(__VA_ARGS__); }), text)
