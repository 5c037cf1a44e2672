#pragma once

#include "support/testing.h"

#include <initializer_list>

namespace support {

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
