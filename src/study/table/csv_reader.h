#pragma once

#include "study/table/plain_lines.h"
#include "study/table/table_format.h"
#include "study/table/table_source.h"
#include "study/table/text_decoder.h"

#include <csv.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace corvath::study {

/// Reads the records of a table (RFC 4180: quoted fields; CR LF, LF or CR) from a file or standard
/// input. Its encoding (TextDecoder), separators, unit row and comments (TableFormat) are found out.
/// Blank lines and records of empty cells alone, which spreadsheets leave behind a table, are passed
/// over; so are comments, lines that begin with #, but below the header those with as many cells as
/// it has count as rows.
class CsvReader : public TableSource {
 public:
  /// Most bytes of a cell and most cells of a record: what is longer is no table.
  static constexpr std::size_t kMaxCellSize = std::size_t{1} << 20;
  static constexpr std::size_t kMaxCells = std::size_t{1} << 20;

  /// @param file  a path, "-" for standard input. @throws Refusal  it cannot be opened
  explicit CsvReader(std::string file);
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;
  ~CsvReader() override;

  /// Rows count as in a spreadsheet, from 1, with blank lines and comments.
  /// @throws Refusal  the file cannot be read, a quotation mark is out of place, what separates is
  ///                  not certain, or it is no text
  void ReadAll(const Handler& handler) override;

  /// Reads on: one piece of the table, in bounded memory.
  /// @param max_lines  of the piece
  /// @param plain      receives the lines of a piece that is plain, with numbers of one known
  ///                   format, unless null; otherwise emptied, and `handler` gets the records
  /// @return  false at the end. @throws as ReadAll()
  bool ReadSome(const Handler& handler, std::size_t max_lines, PlainLines* plain);

  CsvNumber ReadNumber(std::string_view cell) override { return numbers_.Read(cell); }
  const NumberFormat& GetNumberFormat() const { return numbers_; }
  NumberFormat& GetNumberFormat() { return numbers_; }
  /// Between the cells, once something was read.
  char GetSeparator() const { return format_.separator; }
  const Record& GetUnits() const override { return units_; }
  /// "read as UTF-16 with semicolons ...; row 2 holds units" for example.
  std::string DescribeFormat() const override;
  const std::string& GetName() const override { return name_; }
  /// Share of the file that was read, 0 to 1; negative when its size is unknown.
  double GetProgress() const;

 private:
  struct Feed;

  void OnField(const char* text, std::size_t size);
  void OnLineEnd(int end, const Handler& handler);
  void Take(Feed& feed, std::string_view text);
  bool FindLine(std::string_view text, std::size_t& begin);
  void TakeMarkedLine(Feed& feed);
  void Parse(Feed& feed, std::string_view text);
  void ReadChunk();
  void FindFormat();
  bool IsAtPlainLine() const;
  std::string_view NextPiece(std::size_t max_lines);
  void TakePlain(const Handler& handler, std::string_view lines);
  [[noreturn]] void Refuse(const std::string& what) const;

  std::string name_;
  std::FILE* file_;
  csv_parser parser_;
  Record record_;
  std::size_t num_fields_ = 0;  ///< of record_ in use: its strings keep their memory
  int line_end_ = 0;            ///< the last one
  std::uint64_t row_ = 0;
  TextDecoder decoder_;
  TableFormat format_;
  NumberFormat numbers_;
  Record units_;
  std::size_t num_columns_ = 0;  ///< of the header; 0 before it
  std::string line_;             ///< a line that begins with #, until its end has come
  bool in_marked_line_ = false;
  bool quoted_ = false;  ///< between quotation marks
  bool at_line_begin_ = true;
  std::uint64_t num_comments_ = 0;
  std::string chunk_;    ///< as read
  std::string pending_;  ///< decoded; the pieces before `piece_begin_` are taken
  std::size_t piece_begin_ = 0;
  bool has_format_ = false;
  bool is_decoded_ = false;  ///< nothing comes behind `pending_`
  std::uint64_t bytes_read_ = 0;
  std::uint64_t size_ = 0;  ///< 0 when unknown
};

/// Whether all cells are empty.
bool IsBlank(const CsvReader::Record& record);

/// The cells of one record, with quotes as in a file: a,b are two, "a,b" is one.
/// @param place  where it stands, for the message
/// @throws Refusal  a quotation mark is out of place
CsvReader::Record ParseRecord(std::string_view text, const std::string& place);

}  // namespace corvath::study
