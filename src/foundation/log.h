#pragma once

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace corvath::utils::log {

/// Level of a log line: one bit each.
enum Level : std::uint32_t {
  kError = 1,
  kDebug = 2,
  kWarning = 4,
  kInfo = 8,
  kTrace = 16,
  kInfoDetail = 32
};

/// "ERROR", "DEBUG", "WARNING", "INFO", "TRACE", "INFO_DETAIL"; "UNDEFINED" for anything else.
std::wstring GetLevelName(std::uint32_t level);

namespace templates {

/// Takes the lines of a log. Levels are the constants above. Derived classes lock for themselves.
template <class Char>
class LogBase {
 public:
  virtual ~LogBase() = default;
  virtual void Write(std::uint32_t level, std::basic_string<Char> text) = 0;  ///< one line
};

/// Discards every line.
template <class Char>
class LogDummy : public LogBase<Char> {
 public:
  void Write(std::uint32_t, std::basic_string<Char>) override {}
};

/// Keeps every line in memory.
template <class Char>
class VectorLog : public LogBase<Char> {
 public:
  using Line = std::pair<std::uint32_t, std::basic_string<Char>>;
  void Write(std::uint32_t level, std::basic_string<Char> text) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    lines_.emplace_back(level, std::move(text));
  }
  std::vector<Line> GetLines() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<Line> lines_;
};

/// One line per message, `<level name>: <text>`, flushed: errors to the second stream, all other
/// levels to the first.
template <class Char>
class BasicStreamLog : public LogBase<Char> {
 public:
  /// The streams must outlive the logger.
  BasicStreamLog(std::basic_ostream<Char>& out, std::basic_ostream<Char>& err)
      : out_(out), err_(err) {}
  void Write(std::uint32_t level, std::basic_string<Char> text) override;

  /// Around a fork of the process, so that the child can write: no line is half written.
  void BeforeFork() { mutex_.lock(); }
  void AfterFork() { mutex_.unlock(); }

 private:
  std::mutex mutex_;
  std::basic_ostream<Char>& out_;
  std::basic_ostream<Char>& err_;
};

extern template class BasicStreamLog<wchar_t>;

}  // namespace templates

using LogBase = templates::LogBase<wchar_t>;
using LogDummy = templates::LogDummy<wchar_t>;
using VectorLog = templates::VectorLog<wchar_t>;

namespace detail {

/// Wide streams to the process's standard output and error, see foundation/standard_streams.h. A
/// base, so that they stand before the log that writes to them.
class StandardStreams {
 protected:
  StandardStreams();
  ~StandardStreams();
  std::wostream& GetOut();
  std::wostream& GetErr();

 private:
  struct Streams;
  std::unique_ptr<Streams> streams_;
};

}  // namespace detail

/// The log of the process: standard output, and standard error for level 1, both as UTF-8.
class BasicStreamLog : private detail::StandardStreams, public templates::BasicStreamLog<wchar_t> {
 public:
  BasicStreamLog();
};

/// The one process-wide BasicStreamLog; lives from loading to unloading.
boost::shared_ptr<LogBase> GetSharedStreamLog();

}  // namespace corvath::utils::log

namespace corvath::utils {
using log::LogBase;
}
