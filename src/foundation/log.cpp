#include "foundation/log.h"

#include "foundation/standard_streams.h"
#include "foundation/text.h"

#include <boost/make_shared.hpp>
#include <pthread.h>

#include <ostream>
#include <streambuf>

namespace corvath::utils::log {
namespace {

/// A wide stream buffer that hands complete UTF-8 text to `print`. std::wcout itself would turn the
/// C stream under it wide, after which the host's printf and std::cout print nothing; and in the C
/// locale it stops at the first non-ASCII character.
class Utf8Buffer : public std::wstreambuf {
 public:
  explicit Utf8Buffer(void (*print)(std::string_view)) : print_(print) {}

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
    print_(ToUtf8(pending_));
    pending_.clear();
    return 0;
  }

 private:
  void (*print_)(std::string_view);
  std::wstring pending_;
};

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

namespace detail {

struct StandardStreams::Streams {
  Utf8Buffer out_buffer{PrintOutput};
  Utf8Buffer err_buffer{PrintError};
  std::wostream out{&out_buffer};
  std::wostream err{&err_buffer};
};

StandardStreams::StandardStreams() : streams_(std::make_unique<Streams>()) {}
StandardStreams::~StandardStreams() = default;
std::wostream& StandardStreams::GetOut() {
  return streams_->out;
}
std::wostream& StandardStreams::GetErr() {
  return streams_->err;
}

}  // namespace detail

BasicStreamLog::BasicStreamLog() : templates::BasicStreamLog<wchar_t>(GetOut(), GetErr()) {}

namespace {

/// Null before loading and after unloading.
BasicStreamLog* forking_log = nullptr;

class SharedLog {
 public:
  SharedLog() : log_(boost::make_shared<BasicStreamLog>()) {
    forking_log = log_.get();
    const auto after = [] {
      if (forking_log != nullptr) forking_log->AfterFork();
    };
    pthread_atfork(
        [] {
          if (forking_log != nullptr) forking_log->BeforeFork();
        },
        after, after);
  }
  SharedLog(const SharedLog&) = delete;
  SharedLog& operator=(const SharedLog&) = delete;
  ~SharedLog() { forking_log = nullptr; }

  const boost::shared_ptr<BasicStreamLog>& Get() const { return log_; }

 private:
  boost::shared_ptr<BasicStreamLog> log_;
};

const SharedLog shared_log;

}  // namespace

boost::shared_ptr<LogBase> GetSharedStreamLog() {
  return shared_log.Get();
}

}  // namespace corvath::utils::log
