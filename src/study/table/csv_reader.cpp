#include "study/table/csv_reader.h"

#include "study/refusal.h"
#include "study/table/csv_cell.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <new>

namespace corvath::study {
namespace {

constexpr std::size_t kChunk = 1 << 16;
constexpr std::size_t kPieceLines = 4096;
constexpr std::size_t kPieceSize = 1 << 20;  // and up to a chunk more
constexpr unsigned char kOptions = CSV_STRICT | CSV_STRICT_FINI;

/// Signals of the host may break off the waiting for the other end of a pipe.
std::FILE* OpenForReading(const std::string& path) {
  std::FILE* file = nullptr;
  do {
    file = std::fopen(path.c_str(), "rb");
  } while (file == nullptr && errno == EINTR);
  return file;
}

}  // namespace

CsvReader::CsvReader(std::string file)
    : name_(file == "-" ? "standard input" : file),
      file_(file == "-" ? stdin : OpenForReading(file)) {
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
  record_.erase(last, record_.end());
  if (!IsBlank(record_)) {
    num_fields_ = 0;
    if (row_ == format_.separator_row) return;
    if (num_columns_ == 0) num_columns_ = record_.size();
    if (row_ == format_.unit_row)
      units_ = record_;
    else
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
        [&](CsvReader& to) { to.OnField(static_cast<const char*>(text), size); });
  }
  static void OnLineEnd(int end, void* data) {
    auto& feed = *static_cast<Feed*>(data);
    feed.Run([&](CsvReader& to) { to.OnLineEnd(end, feed.handler); });
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

void CsvReader::Parse(Feed& feed, std::string_view text) {
  const std::size_t zero = std::min(text.find('\0'), text.size());
  const bool parsed =
      csv_parse(&parser_, text.data(), zero, Feed::OnField, Feed::OnLineEnd, &feed) == zero;
  if (feed.failure) std::rethrow_exception(feed.failure);
  if (!parsed) {
    if (csv_error(&parser_) != CSV_EPARSE) throw std::bad_alloc();
    Refuse("a quotation mark out of place");
  }
  if (parser_.entry_pos > kMaxCellSize)
    Refuse("longer than " + std::to_string(kMaxCellSize) +
           " bytes (a quotation mark that is not closed?)");
  if (zero < text.size()) Refuse("a zero byte: this is no text");
}

/// Finds a line that begins with #, and keeps account of line begins and quotation marks up to it.
bool CsvReader::FindLine(std::string_view text, std::size_t& begin) {
  for (begin = 0; begin < text.size(); ++begin) {
    const char c = text[begin];
    if (c == '#' && at_line_begin_ && !quoted_) return true;
    if (c == '"') quoted_ = !quoted_;
    if (c == '\n' || c == '\r')
      at_line_begin_ = true;
    else if (c != ' ' && c != '\t')
      at_line_begin_ = false;
  }
  return false;
}

/// Parses `text`, the lines that begin with # apart: quotation marks mean nothing in comments.
void CsvReader::Take(Feed& feed, std::string_view text) {
  while (!text.empty()) {
    if (!in_marked_line_) {
      std::size_t begin = 0;
      in_marked_line_ = FindLine(text, begin);
      Parse(feed, text.substr(0, begin));
      text.remove_prefix(begin);
      continue;
    }
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    line_ += text.substr(0, end);
    if (line_.size() > kMaxCellSize)
      Refuse("a comment of more than " + std::to_string(kMaxCellSize) + " bytes");
    text.remove_prefix(end);
    if (!text.empty()) TakeMarkedLine(feed);
  }
}

/// Parses or drops line_, whose end comes next.
void CsvReader::TakeMarkedLine(Feed& feed) {
  in_marked_line_ = false;
  at_line_begin_ = false;
  if (row_ + 1 == format_.commented_header) {
    const std::size_t name = line_.find_first_not_of(" \t", 1);
    Parse(feed, name == std::string::npos || line_[name] == format_.separator
                    ? std::string_view(line_)
                    : std::string_view(line_).substr(name));
  } else if (num_columns_ > 1 && CountCells(line_, format_.separator) == num_columns_) {
    Parse(feed, line_);
  } else {
    ++num_comments_;
  }
  line_.clear();
}

/// Adds the next bytes to pending_.
void CsvReader::ReadChunk() {
  pending_.erase(0, piece_begin_);
  piece_begin_ = 0;
  chunk_.resize(kChunk);
  std::size_t size = 0;
  do {  // a signal may break off the reading, too, with or without some bytes
    size = std::fread(chunk_.data(), 1, chunk_.size(), file_);
    if (std::ferror(file_) == 0) break;
    if (errno != EINTR) throw Refusal(name_ + ": " + std::strerror(errno));
    std::clearerr(file_);
  } while (size == 0);
  bytes_read_ += size;
  decoder_.Decode({chunk_.data(), size}, size == 0, pending_);
  is_decoded_ = size == 0 || !decoder_.GetFault().empty();
}

void CsvReader::FindFormat() {
  ReadChunk();
  format_ = FindTableFormat(pending_, bytes_read_ < kChunk);
  if (!format_.ambiguity.empty()) throw Refusal(name_ + ": " + format_.ambiguity);
  numbers_ = NumberFormat(format_.decimal);
  csv_set_delim(&parser_, static_cast<unsigned char>(format_.separator));
  has_format_ = true;
}

/// Whether a row comes next that only holds cells, unless bytes in it have a meaning.
bool CsvReader::IsAtPlainLine() const {
  const bool at_begin =
      at_line_begin_ && line_end_ == '\n' && num_fields_ == 0 && !quoted_ && !in_marked_line_;
  return at_begin && num_columns_ > 0 &&
         row_ >= std::max({format_.separator_row, format_.commented_header, format_.unit_row});
}

/// Takes the next whole lines, fewer than `max_lines` where they are long; part of a line where one
/// alone is too long for that, or at the end. Empty at the end. Valid until the next call.
std::string_view CsvReader::NextPiece(std::size_t max_lines) {
  std::size_t size = 0;
  std::size_t searched = 0;
  for (std::size_t lines = 0; lines < max_lines;) {
    const std::size_t end = pending_.find('\n', piece_begin_ + searched);
    if (end != std::string::npos) {
      size = searched = end + 1 - piece_begin_;
      ++lines;
      continue;
    }
    searched = pending_.size() - piece_begin_;
    if (is_decoded_) size = searched;
    if (is_decoded_ || searched >= kPieceSize) break;
    ReadChunk();
  }
  if (size == 0) size = pending_.size() - piece_begin_;
  const std::string_view piece = std::string_view(pending_).substr(piece_begin_, size);
  piece_begin_ += size;
  return piece;
}

/// As Parse(), for plain lines.
void CsvReader::TakePlain(const Handler& handler, std::string_view lines) {
  std::string_view line;
  while (TakeLine(lines, line)) {
    SplitPlainLine(line, format_.separator, record_);
    ++row_;
    if (!IsBlank(record_)) handler(row_, record_);
  }
}

bool CsvReader::ReadSome(const Handler& handler, std::size_t max_lines, PlainLines* plain) {
  if (!has_format_) FindFormat();
  if (plain != nullptr) plain->text.clear();
  Feed feed{*this, handler, nullptr};
  const bool may_be_plain = IsAtPlainLine();
  const std::string_view piece = NextPiece(may_be_plain ? max_lines : 1);
  if (piece.empty()) {
    if (!decoder_.GetFault().empty()) Refuse(decoder_.GetFault());
    if (in_marked_line_) TakeMarkedLine(feed);
    if (csv_fini(&parser_, Feed::OnField, Feed::OnLineEnd, &feed) != 0)
      Refuse("the quotation mark is not closed");
    if (feed.failure) std::rethrow_exception(feed.failure);
    return false;
  }
  // The last line needs no end, unless it was cut off by a fault.
  const bool is_whole = piece.back() == '\n' || (is_decoded_ && decoder_.GetFault().empty());
  const auto lines = may_be_plain && is_whole ? CountPlainLines(piece, kMaxCellSize) : std::nullopt;
  const auto decimal = numbers_.GetDecimal();
  const bool is_known =
      decimal == NumberFormat::Decimal::kPoint || decimal == NumberFormat::Decimal::kComma;
  if (!lines) {
    Take(feed, piece);
  } else if (plain != nullptr && is_known) {
    plain->text = piece;
    plain->first_row = row_ + 1;
    row_ += *lines;
  } else {
    TakePlain(handler, piece);
  }
  return true;
}

void CsvReader::ReadAll(const Handler& handler) {
  while (ReadSome(handler, kPieceLines, nullptr)) {
  }
}

std::string CsvReader::DescribeFormat() const {
  using Encoding = TextDecoder::Encoding;
  using Decimal = NumberFormat::Decimal;
  std::string text;
  const Encoding encoding = decoder_.GetEncoding();
  if (encoding == Encoding::kWindows1252) text = "read as Windows-1252 (Latin-1) text";
  if (encoding == Encoding::kUtf16LittleEndian || encoding == Encoding::kUtf16BigEndian)
    text = "read as UTF-16 text";
  if (format_.separator != ',') {
    text += text.empty() ? "read with " : " with ";
    text += NameOfSeparator(format_.separator);
    text += " between the cells";
    if (numbers_.GetDecimal() == Decimal::kComma) text += " and decimal commas";
    if (numbers_.GetDecimal() == Decimal::kPoint) text += " and decimal points";
  }
  const auto add = [&](const std::string& part) { text += (text.empty() ? "" : "; ") + part; };
  if (format_.commented_header > 0)
    add("row " + std::to_string(format_.commented_header) + " is the header");
  if (!units_.empty()) add("row " + std::to_string(format_.unit_row) + " holds units");
  if (num_comments_ == 1) add("1 comment line left out");
  if (num_comments_ > 1) add(std::to_string(num_comments_) + " comment lines left out");
  return text;
}

bool IsBlank(const CsvReader::Record& record) {
  return std::all_of(record.begin(), record.end(),
                     [](const std::string& cell) { return cell.empty(); });
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

}  // namespace corvath::study
