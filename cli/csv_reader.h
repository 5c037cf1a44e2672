#pragma once

#include <csv.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace cli {

/// Reads records of comma-separated values (RFC 4180: quoted fields, CR LF or LF) from a file or
/// standard input. Blank lines are no records; a byte order mark is passed over.
class CsvReader {
 public:
  using Record = std::vector<std::string>;
  /// Called for each record. @param row  1 for the first record of the file, the header
  using Handler = std::function<void(std::uint64_t row, const Record& record)>;

  /// @param file  a path, "-" for standard input. @throws Refusal  it cannot be opened
  explicit CsvReader(std::string file);
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;
  ~CsvReader();

  /// Reads to the end. What `handler` throws ends the reading and passes on.
  /// @throws Refusal  the file cannot be read, or a quoted field is not closed
  void ReadAll(const Handler& handler);

  /// Name for messages.
  const std::string& GetName() const { return name_; }
  /// Share of the file that was read, 0 to 1; negative when its size is unknown.
  double GetProgress() const;

 private:
  void OnField(const char* text, std::size_t size);
  void OnRecord(const Handler& handler);

  std::string name_;
  std::FILE* file_;
  csv_parser parser_;
  Record record_;
  std::size_t num_fields_ = 0;  ///< of record_ in use: its strings keep their memory
  std::uint64_t row_ = 0;
  std::uint64_t bytes_read_ = 0;
  std::uint64_t size_ = 0;  ///< 0 when unknown
};

}  // namespace cli
