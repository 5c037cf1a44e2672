#pragma once

#include "foundation/log.h"
#include "foundation/text_stream.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace corvath::utils::log {

/// One line under construction, sent by the destructor at the end of the full expression:
///
///     LogLine(logger, kError) << name << L" does not exist";
///
/// A line with no logger or to which nothing was streamed sends nothing.
class LogLine {
 public:
  using Callback = std::function<void(LogBase*, std::uint32_t, std::wstring)>;

  LogLine(LogBase* logger, std::uint32_t level, Callback callback = {})
      : logger_(logger), level_(level), callback_(std::move(callback)) {}
  LogLine(const boost::shared_ptr<LogBase>& logger, std::uint32_t level, Callback callback = {})
      : LogLine(logger.get(), level, std::move(callback)) {}
  LogLine(const LogLine&) = delete;
  LogLine& operator=(const LogLine&) = delete;
  ~LogLine();

  /// Appends `value` as a wide stream prints it.
  template <class T>
  LogLine& operator<<(const T& value) {
    WideTextStream stream;
    stream << value;
    return Append(stream.str());
  }
  LogLine& operator<<(const std::wstring& text) { return Append(text); }
  LogLine& operator<<(const wchar_t* text) { return Append(text); }
  /// Narrow text, such as what(), taken as UTF-8.
  LogLine& operator<<(const std::string& text);
  LogLine& operator<<(const char* text) { return *this << std::string(text); }

 private:
  LogLine& Append(const std::wstring& text);

  LogBase* logger_;
  std::uint32_t level_;
  std::optional<std::wstring> text_;
  Callback callback_;
};

}  // namespace corvath::utils::log
