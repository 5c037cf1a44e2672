#include "foundation/log.h"

#include "foundation/text.h"

#include <boost/make_shared.hpp>

#include <iostream>
#include <streambuf>

namespace corvath::utils::log {
namespace {

/// A wide stream buffer that hands complete UTF-8 text to a narrow standard stream. std::wcout
/// itself would turn the C stream under it wide, after which the host's printf and std::cout print
/// nothing; and in the C locale it stops at the first non-ASCII character.
class Utf8Buffer : public std::wstreambuf {
 public:
  explicit Utf8Buffer(std::ostream& narrow) : narrow_(narrow) {}

 protected:
  int_type overflow(int_type c) override {
    if (!traits_type::eq_int_type(c, traits_type::eof())) pending_ += traits_type::to_char_type(c);
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const wchar_t* text, std::streamsize n) override {
    pending_.append(text, static_cast<std::size_t>(n));
    return n;
  }
  int sync() override {
    narrow_ << ToUtf8(pending_) << std::flush;
    pending_.clear();
    return narrow_ ? 0 : -1;
  }

 private:
  std::ostream& narrow_;
  std::wstring pending_;
};

struct Utf8Stream {
  explicit Utf8Stream(std::ostream& narrow) : buffer(narrow), stream(&buffer) {}
  Utf8Buffer buffer;
  std::wostream stream;
};

/// Never destroyed: loggers may write until the very end of the process.
std::wostream& StandardOutput() {
  static auto* const out = new Utf8Stream(std::cout);
  return out->stream;
}

std::wostream& StandardError() {
  static auto* const err = new Utf8Stream(std::cerr);
  return err->stream;
}

}  // namespace

std::wstring GetLevelName(std::uint32_t level) {
  switch (level) {
    case kError:
      return L"ERROR";
    case kDebug:
      return L"DEBUG";
    case kWarning:
      return L"WARNING";
    case kInfo:
      return L"INFO";
    case kTrace:
      return L"TRACE";
    case kInfoDetail:
      return L"INFO_DETAIL";
    default:
      return L"UNDEFINED";
  }
}

namespace templates {

template <class Char>
void BasicStreamLog<Char>::Write(std::uint32_t level, std::basic_string<Char> text) {
  const std::lock_guard<std::mutex> lock(mutex_);
  auto& stream = level == kError ? err_ : out_;
  stream << GetLevelName(level) << L": " << text << std::endl;
}

template class BasicStreamLog<wchar_t>;

}  // namespace templates

BasicStreamLog::BasicStreamLog()
    : templates::BasicStreamLog<wchar_t>(StandardOutput(), StandardError()) {}

namespace {

const boost::shared_ptr<LogBase> shared_log = boost::make_shared<BasicStreamLog>();

}  // namespace

boost::shared_ptr<LogBase> GetSharedStreamLog() {
  return shared_log;
}

}  // namespace corvath::utils::log
