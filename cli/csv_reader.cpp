#include "csv_reader.h"

#include "commands.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <exception>

namespace cli {
namespace {

constexpr std::size_t kChunk = 1 << 16;
constexpr char kByteOrderMark[] = "\xef\xbb\xbf";
constexpr std::size_t kMarkSize = sizeof kByteOrderMark - 1;

}  // namespace

CsvReader::CsvReader(std::string file)
    : name_(file == "-" ? "standard input" : file),
      file_(file == "-" ? stdin : std::fopen(file.c_str(), "rb")) {
  if (file_ == nullptr) throw Refusal(name_ + ": " + std::strerror(errno));
  struct stat status {};
  if (fstat(fileno(file_), &status) == 0) {
    if (S_ISDIR(status.st_mode)) {
      std::fclose(file_);
      throw Refusal(name_ + ": is a directory");
    }
    if (S_ISREG(status.st_mode)) size_ = static_cast<std::uint64_t>(status.st_size);
  }
  csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI);
}

CsvReader::~CsvReader() {
  csv_free(&parser_);
  if (file_ != stdin) std::fclose(file_);
}

double CsvReader::GetProgress() const {
  return size_ == 0 ? -1.0 : static_cast<double>(bytes_read_) / static_cast<double>(size_);
}

void CsvReader::OnField(const char* text, std::size_t size) {
  if (num_fields_ == record_.size()) record_.emplace_back();
  record_[num_fields_++].assign(text == nullptr ? "" : text, size);
}

void CsvReader::OnRecord(const Handler& handler) {
  ++row_;
  record_.resize(num_fields_);
  num_fields_ = 0;
  handler(row_, record_);
}

void CsvReader::ReadAll(const Handler& handler) {
  // libcsv is C: an exception must not pass through it, so it waits for the end of the chunk.
  struct Context {
    CsvReader* reader;
    const Handler* handler;
    std::exception_ptr failure;
  } context{this, &handler, nullptr};
  const auto on_field = [](void* text, std::size_t size, void* data) {
    auto& c = *static_cast<Context*>(data);
    if (c.failure) return;
    try {
      c.reader->OnField(static_cast<const char*>(text), size);
    } catch (...) {
      c.failure = std::current_exception();
    }
  };
  const auto on_record = [](int, void* data) {
    auto& c = *static_cast<Context*>(data);
    if (c.failure) return;
    try {
      c.reader->OnRecord(*c.handler);
    } catch (...) {
      c.failure = std::current_exception();
    }
  };
  const auto check = [&](bool parsed) {
    if (context.failure) std::rethrow_exception(context.failure);
    if (!parsed)
      throw Refusal(name_ + ": row " + std::to_string(row_ + 1) + ": " +
                    csv_strerror(csv_error(&parser_)) + " (a quotation mark out of place?)");
  };

  std::vector<char> chunk(kChunk);
  for (bool first = true;; first = false) {
    std::size_t size = std::fread(chunk.data(), 1, chunk.size(), file_);
    if (size == 0) break;
    bytes_read_ += size;
    const char* begin = chunk.data();
    if (first && size >= kMarkSize && std::memcmp(begin, kByteOrderMark, kMarkSize) == 0) {
      begin += kMarkSize;
      size -= kMarkSize;
    }
    check(csv_parse(&parser_, begin, size, on_field, on_record, &context) == size);
  }
  if (std::ferror(file_) != 0) throw Refusal(name_ + ": " + std::strerror(errno));
  check(csv_fini(&parser_, on_field, on_record, &context) == 0);
}

}  // namespace cli
