#pragma once

namespace corvath::observer_pattern {

/// Marks a class whose changes can be observed. No observer is attached in this library.
class CPublisher {
 public:
  CPublisher() = default;
  CPublisher(const CPublisher&) = default;
  CPublisher& operator=(const CPublisher&) = default;
  virtual ~CPublisher() = default;
};

}  // namespace corvath::observer_pattern
