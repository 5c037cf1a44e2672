#pragma once

#include <exception>

namespace fuzz {

/// A refusal of one question, which leaves the next one.
template <class Question>
void Try(const Question& question) {
  try {
    question();
  } catch (const std::exception&) {
    // a refusal
  }
}

}  // namespace fuzz
