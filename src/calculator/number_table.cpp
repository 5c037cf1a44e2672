#include "calculator/number_table.h"

#include "variant/value/limits.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

namespace corvath::calculator {

namespace {

using math::Value;

enum Class : unsigned char {
  kControl,    ///< ends a row; line ends are among them
  kSeparator,  ///< blanks and visible characters that no number begins with
  kStart,      ///< a number may begin here
};

constexpr std::array<Class, 256> MakeClasses() {
  std::array<Class, 256> classes{};
  for (std::size_t c = 0; c < classes.size(); ++c)
    classes[c] = (c < 0x20 && c != '\t') || c == 0x7F ? kControl : kSeparator;
  for (const char c :
       {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', '.', '+', '-', 'n', 'N', 'i', 'I'})
    classes[static_cast<unsigned char>(c)] = kStart;
  return classes;
}

constexpr std::array<Class, 256> kClasses = MakeClasses();

Class ClassOf(char c) {
  return kClasses[static_cast<unsigned char>(c)];
}

bool IsDecimal(char c) {
  return c >= '0' && c <= '9';
}

/// Infinity or 0 in place of a number that doubles cannot hold: is it above or below 1?
double Saturate(const char* first, const char* last) {
  long long magnitude = 0;  // decimal exponent of the first digit that is not 0, plus 1
  bool significant = false;
  bool fraction = false;
  for (; first != last && (IsDecimal(*first) || *first == '.'); ++first) {
    significant = significant || (IsDecimal(*first) && *first != '0');
    if (*first == '.')
      fraction = true;
    else if (significant && !fraction)
      ++magnitude;
    else if (!significant && fraction)
      --magnitude;
  }
  if (first == last) return magnitude > 0 ? std::numeric_limits<double>::infinity() : 0.0;
  ++first;  // e
  const bool negative = *first == '-';
  if (*first == '-' || *first == '+') ++first;
  long long exponent = 0;
  for (; first != last; ++first)
    exponent = std::min(10 * exponent + (*first - '0'), std::numeric_limits<long long>::max() / 20);
  magnitude += negative ? -exponent : exponent;
  return magnitude > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

class Reader {
 public:
  explicit Reader(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

  void SkipLines(std::uint64_t count) {
    for (; count > 0 && at_ != end_; --count) SkipLine();
  }

  /// Reads the table from here on.
  void Read() {
    const char* begin = at_;
    while (at_ != end_ && columns_ == 0) {
      begin = at_;
      columns_ = ReadRow(std::numeric_limits<std::size_t>::max());
      SkipLine();
    }
    if (columns_ == 0) return;
    const std::ptrdiff_t more_rows = (end_ - at_) / (at_ - begin) + 1;  // of this row's length
    numbers_.reserve(
        std::min(columns_ * (1 + static_cast<std::size_t>(more_rows)), math::kMaxEntries));
    for (rows_ = 1; at_ != end_; ++rows_) {
      const std::size_t size = numbers_.size();
      if (ReadRow(columns_) != columns_) {
        numbers_.resize(size);
        break;
      }
      SkipLine();
    }
  }

  Value ToValue() const;

 private:
  void SkipLine() {
    while (at_ != end_ && *at_ != '\n' && *at_ != '\r') ++at_;
    if (at_ != end_ && *at_++ == '\r' && at_ != end_ && *at_ == '\n') ++at_;
  }

  /// Appends the numbers of one line, one more than `most` at the utmost.
  /// @return their number
  std::size_t ReadRow(std::size_t most) {
    while (at_ != end_ && (*at_ == ' ' || *at_ == '\t')) ++at_;
    double number;
    if (at_ == end_ || !ReadNumber(number)) return 0;
    for (std::size_t count = 1;; ++count) {
      if (numbers_.size() == math::kMaxEntries) math::CheckEntries(1, math::kMaxEntries + 1);
      numbers_.push_back(number);
      if (count > most) return count;
      const char* const behind = at_;
      const char* begin;
      for (;; ++at_) {
        if (at_ == end_ || ClassOf(*at_) == kControl) return count;
        begin = at_;
        if (ClassOf(*at_) == kStart && ReadNumber(number)) break;
      }
      if (begin == behind) return count;  // no separator in between
    }
  }

  /// Goes behind the number that begins here; stays if none does.
  bool ReadNumber(double& number) {
    const char* p = at_;
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    if (p == end_) return false;
    if (IsDecimal(*p) || *p == '.') {
      const auto [last, error] = std::from_chars(p, end_, number);
      if (error == std::errc::invalid_argument) return false;  // a lone point
      if (error == std::errc::result_out_of_range) number = Saturate(p, last);
      at_ = last;
    } else if (Matches(p, "nan")) {
      number = std::numeric_limits<double>::quiet_NaN();
      p += 3;
      if (p != end_ && *p == '(' && !(p = FindClosing(p))) return false;
      at_ = p;
    } else if (Matches(p, "inf")) {
      number = std::numeric_limits<double>::infinity();
      at_ = Matches(p, "infinity") ? p + 8 : p + 3;
    } else {
      return false;
    }
    if (negative) number = -number;
    return true;
  }

  /// @param word  in lower case
  bool Matches(const char* p, std::string_view word) const {
    return static_cast<std::size_t>(end_ - p) >= word.size() &&
           std::equal(word.begin(), word.end(), p,
                      [](char lower, char c) { return c == lower || c == lower - 'a' + 'A'; });
  }

  /// Behind the next ")" of the line; null if there is none.
  const char* FindClosing(const char* p) {
    if (p < unclosed_end_) return nullptr;  // looked for already: lines of "nan(" stay linear
    while (p != end_ && *p != ')' && *p != '\n' && *p != '\r') ++p;
    if (p != end_ && *p == ')') return p + 1;
    unclosed_end_ = p;
    return nullptr;
  }

  const char* at_;
  const char* const end_;
  const char* unclosed_end_ = nullptr;  ///< up to here there is no ")" in the line
  std::vector<double> numbers_;         ///< row by row
  std::size_t rows_ = 0;
  std::size_t columns_ = 0;
};

Value Reader::ToValue() const {
  const double* const x = numbers_.data();
  if (rows_ == 0) return Value();
  if (rows_ == 1 && columns_ == 1) return Value(*x);
  if (rows_ == 1 || columns_ == 1) {
    Value::Vector vector(numbers_.size());
    std::copy(numbers_.begin(), numbers_.end(), vector.begin());
    return Value(std::move(vector));
  }
  bool ascending = true;  // NaN ascends nowhere
  for (std::size_t i = 1; i < rows_ && ascending; ++i)
    ascending = x[(i - 1) * columns_] < x[i * columns_];
  if (!ascending) {
    Value::Matrix matrix(rows_, columns_);
    std::copy(numbers_.begin(), numbers_.end(), matrix.data().begin());
    return Value(std::move(matrix));
  }
  Value::Vector timeline(rows_);
  for (std::size_t i = 0; i < rows_; ++i) timeline(i) = x[i * columns_];
  Value::Matrix data(columns_ - 1, rows_);
  constexpr std::size_t kBlock = 16;  // columns at a time, or long rows would leave the cache
  for (std::size_t first = 1; first < columns_; first += kBlock) {
    const std::size_t last = std::min(first + kBlock, columns_);
    for (std::size_t i = 0; i < rows_; ++i)
      for (std::size_t j = first; j < last; ++j) data(j - 1, i) = x[i * columns_ + j];
  }
  Value signal = Value::Signal(std::move(timeline), std::move(data));
  if (columns_ == 2) signal.SetKind(Value::XYDATA);
  return signal;
}

}  // namespace

Value ParseNumberTable(std::string_view text, std::uint64_t skipped_lines) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark)
    text.remove_prefix(kByteOrderMark.size());
  Reader reader(text);
  reader.SkipLines(skipped_lines);
  reader.Read();
  return reader.ToValue();
}

Value ReadNumberTable(const std::filesystem::path& path, std::uint64_t skipped_lines) {
  // Room for the longest table; what a sparse file claims beyond it must not be allocated.
  constexpr std::uintmax_t kMaxSize = 32 * std::uintmax_t{math::kMaxEntries};
  const std::uintmax_t size = std::filesystem::file_size(path);
  const auto fail = [&](std::errc reason) {
    throw std::filesystem::filesystem_error("cannot read table", path,
                                            std::make_error_code(reason));
  };
  if (size > kMaxSize) fail(std::errc::file_too_large);
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "rb"));
  if (!file) fail(static_cast<std::errc>(errno));
  const std::unique_ptr<char[]> bytes(new char[static_cast<std::size_t>(size)]);
  const std::size_t read = std::fread(bytes.get(), 1, static_cast<std::size_t>(size), file.get());
  if (std::ferror(file.get())) fail(static_cast<std::errc>(errno));
  return ParseNumberTable({bytes.get(), read}, skipped_lines);
}

}  // namespace corvath::calculator
