#pragma once

#include "foundation/exception.h"

#include <cstddef>
#include <string>

/// Failures of expression texts. They have no namespace.
class CCalculatorException : public corvath::utils::runtime_error {
 public:
  using runtime_error::runtime_error;
};

class CCalculatorObjectUnknownException : public CCalculatorException {
 public:
  CCalculatorObjectUnknownException(const std::wstring& message, std::wstring name)
      : CCalculatorException(message), name_(std::move(name)) {}
  const std::wstring& GetName() const { return name_; }

 private:
  std::wstring name_;
};

class CCircularDependencyException : public CCalculatorException {
 public:
  using CCalculatorException::CCalculatorException;
};

/// Prepares the message of CExpressionPositionException, whose base it is so that it comes first.
class CExpressionPositionExceptionInitializer {
 protected:
  CExpressionPositionExceptionInitializer(const std::wstring& message, const std::wstring& text,
                                          std::size_t offset)
      : full_message_(message) {
    if (offset < text.size())
      full_message_ += L'\n' + text + L'\n' + std::wstring(offset, L' ') + L'^';
  }

  std::wstring full_message_;
};

/// An error at a place of a text. The message shows the text and a caret under the place, unless
/// that is the text's end.
class CExpressionPositionException : private CExpressionPositionExceptionInitializer,
                                     public CCalculatorException {
 public:
  /// @param text  without blanks; `offset` counts its characters
  CExpressionPositionException(std::wstring message, std::wstring text, std::size_t offset)
      : CExpressionPositionExceptionInitializer(message, text, offset),
        CCalculatorException(full_message_),
        raw_message_(std::move(message)),
        text_(std::move(text)),
        offset_(offset) {}

  const std::wstring& GetRawMessage() const { return raw_message_; }
  const std::wstring& GetText() const { return text_; }
  std::size_t GetOffset() const { return offset_; }

 private:
  std::wstring raw_message_;
  std::wstring text_;
  std::size_t offset_;
};
