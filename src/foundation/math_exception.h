#pragma once

#include <exception>
#include <string>

namespace corvath::math {

/// Root of the numeric side's exceptions: one narrow English text.
class CVariantException : public std::exception {
 public:
  explicit CVariantException(std::string message) : message_(std::move(message)) {}
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::string message_;
};

class CTypeException : public CVariantException {
 public:
  using CVariantException::CVariantException;
};
class CDomainException : public CVariantException {
 public:
  using CVariantException::CVariantException;
};
class CDimensionException : public CVariantException {
 public:
  using CVariantException::CVariantException;
};
class CComputationException : public CVariantException {
 public:
  using CVariantException::CVariantException;
};
class CCompatibilityException : public CVariantException {
 public:
  using CVariantException::CVariantException;
};
class CFilterException : public CVariantException {
 public:
  using CVariantException::CVariantException;
};
class CDivideByZeroException : public CVariantException {
 public:
  using CVariantException::CVariantException;
};

}  // namespace corvath::math
