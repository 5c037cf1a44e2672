#include "foundation/log_line.h"

#include "foundation/text.h"

namespace corvath::utils::log {

LogLine::~LogLine() {
  if (logger_ == nullptr || !text_) return;
  try {
    if (callback_)
      callback_(logger_, level_, std::move(*text_));
    else
      logger_->Write(level_, std::move(*text_));
  } catch (...) {
    // A log that cannot be written must not end the work that it reports.
  }
}

LogLine& LogLine::operator<<(const std::string& text) {
  return Append(FromUtf8(text));
}

LogLine& LogLine::Append(const std::wstring& text) {
  if (!text_) text_.emplace();
  *text_ += text;
  return *this;
}

}  // namespace corvath::utils::log
