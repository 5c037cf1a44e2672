#pragma once

#include <stdexcept>

namespace corvath::study {

/// An input that is refused: what() says in one line what is wrong with it, for whoever gave it.
class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The caller's progress function ended the work.
class Cancelled : public std::runtime_error {
 public:
  Cancelled() : std::runtime_error("cancelled") {}
};

}  // namespace corvath::study
