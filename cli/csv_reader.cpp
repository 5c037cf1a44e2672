#include "csv_reader.h"

#include "commands.h"
#include "csv_cell.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <new>

namespace cli {
namespace {

constexpr std::size_t kChunk = 1 << 16;
constexpr unsigned char kOptions = CSV_STRICT | CSV_STRICT_FINI;

bool BeginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

}  // namespace

CsvReader::CsvReader(std::string file)
    : name_(file == "-" ? "standard input" : file),
      file_(file == "-" ? stdin : std::fopen(file.c_str(), "rb")) {
  if (file_ == nullptr) throw Refusal(name_ + ": " + std::strerror(errno));
  struct stat status {};
  if (fstat(fileno(file_), &status) == 0) {
    if (S_ISDIR(status.st_mode)) {
      if (file_ != stdin) std::fclose(file_);
      throw Refusal(name_ + ": is a directory");
    }
    if (S_ISREG(status.st_mode)) size_ = static_cast<std::uint64_t>(status.st_size);
  }
  csv_init(&parser_, kOptions | CSV_REPALL_NL);
}

CsvReader::~CsvReader() {
  csv_free(&parser_);
  if (file_ != stdin) std::fclose(file_);
}

double CsvReader::GetProgress() const {
  return size_ == 0 ? -1.0 : static_cast<double>(bytes_read_) / static_cast<double>(size_);
}

/// Refuses the cell in work.
void CsvReader::Refuse(const std::string& what) const {
  throw Refusal(name_ + ": row " + std::to_string(row_ + 1) + ", cell " +
                std::to_string(num_fields_ + 1) + ": " + what);
}

void CsvReader::OnField(const char* text, std::size_t size) {
  if (num_fields_ == kMaxCells) Refuse("more than " + std::to_string(kMaxCells) + " cells");
  if (size > kMaxCellSize) Refuse("longer than " + std::to_string(kMaxCellSize) + " bytes");
  if (num_fields_ == record_.size()) record_.emplace_back();
  record_[num_fields_++].assign(text == nullptr ? "" : text, size);
}

void CsvReader::OnLineEnd(int end, const Handler& handler) {
  const bool in_pair = line_end_ == '\r' && end == '\n' && num_fields_ == 0;
  line_end_ = end;
  if (in_pair) return;
  ++row_;
  const auto last = record_.begin() + static_cast<std::ptrdiff_t>(num_fields_);
  const bool blank =
      std::all_of(record_.begin(), last, [](const std::string& cell) { return cell.empty(); });
  if (!blank) {
    record_.erase(last, record_.end());
    num_fields_ = 0;
    handler(row_, record_);
  }
  num_fields_ = 0;
}

/// libcsv is C: an exception must not pass through it, so it waits for the end of the chunk.
struct CsvReader::Feed {
  CsvReader& reader;
  const Handler& handler;
  std::exception_ptr failure;

  static void OnField(void* text, std::size_t size, void* data) {
    static_cast<Feed*>(data)->Run(
        [&](CsvReader& reader) { reader.OnField(static_cast<const char*>(text), size); });
  }
  static void OnLineEnd(int end, void* data) {
    auto& feed = *static_cast<Feed*>(data);
    feed.Run([&](CsvReader& reader) { reader.OnLineEnd(end, feed.handler); });
  }
  template <class Action>
  void Run(const Action& action) {
    if (failure) return;
    try {
      action(reader);
    } catch (...) {
      failure = std::current_exception();
    }
  }
};

void CsvReader::Parse(Feed& feed, const char* begin, std::size_t size) {
  const bool parsed =
      csv_parse(&parser_, begin, size, Feed::OnField, Feed::OnLineEnd, &feed) == size;
  if (feed.failure) std::rethrow_exception(feed.failure);
  if (!parsed) {
    if (csv_error(&parser_) != CSV_EPARSE) throw std::bad_alloc();
    Refuse("a quotation mark out of place");
  }
  if (parser_.entry_pos > kMaxCellSize)
    Refuse("longer than " + std::to_string(kMaxCellSize) +
           " bytes (a quotation mark that is not closed?)");
}

std::size_t CsvReader::SkipMark(std::string_view begin) const {
  if (BeginsWith(begin, "\xff\xfe") || BeginsWith(begin, "\xfe\xff"))
    throw Refusal(name_ + ": UTF-16 text; save the table as UTF-8");
  constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
  return BeginsWith(begin, kByteOrderMark) ? kByteOrderMark.size() : 0;
}

void CsvReader::ReadAll(const Handler& handler) {
  Feed feed{*this, handler, nullptr};
  std::vector<char> chunk(kChunk);
  while (const std::size_t size = std::fread(chunk.data(), 1, chunk.size(), file_)) {
    const std::string_view text(chunk.data(), size);
    const std::size_t first = bytes_read_ == 0 ? SkipMark(text) : 0;
    bytes_read_ += size;
    const std::size_t zero = std::min(text.find('\0'), size);
    Parse(feed, chunk.data() + first, zero - first);
    if (zero < size) Refuse("a zero byte: this is no text");
  }
  if (std::ferror(file_) != 0) throw Refusal(name_ + ": " + std::strerror(errno));
  if (csv_fini(&parser_, Feed::OnField, Feed::OnLineEnd, &feed) != 0)
    Refuse("the quotation mark is not closed");
  if (feed.failure) std::rethrow_exception(feed.failure);
}

CsvReader::Record ParseRecord(std::string_view text, const std::string& place) {
  csv_parser parser;
  csv_init(&parser, kOptions);
  CsvReader::Record cells;
  const auto on_field = [](void* cell, std::size_t size, void* data) {
    const char* const begin = cell == nullptr ? "" : static_cast<const char*>(cell);
    static_cast<CsvReader::Record*>(data)->emplace_back(begin, size);
  };
  const bool parsed =
      csv_parse(&parser, text.data(), text.size(), on_field, nullptr, &cells) == text.size() &&
      csv_fini(&parser, on_field, nullptr, &cells) == 0;
  csv_free(&parser);
  if (!parsed) throw Refusal(place + ": " + Quoted(text) + ": a quotation mark out of place");
  return cells;
}

}  // namespace cli
