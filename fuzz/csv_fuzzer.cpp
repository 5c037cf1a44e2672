// Tables of the program zel: records, cells, and the designs of a table whose first column is taken
// for an input (with the others that fit its name as a pattern) and whose second for a response.

#include "commands.h"
#include "csv_cell.h"
#include "csv_reader.h"
#include "date_text.h"
#include "design_table.h"
#include "memory_file.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  cli::CsvReader::Record header;
  try {
    cli::CsvReader reader(file.GetPath());
    reader.ReadAll([&](std::uint64_t, const cli::CsvReader::Record& record) {
      if (header.empty()) header = record;
      for (const std::string& cell : record) {
        const cli::CsvNumber number = reader.ReadNumber(cell);
        if (number.kind != cli::CsvNumber::Kind::kNumber) cli::RefusalText(cell, number.kind);
        cli::ReadDate(cell);
      }
    });
    reader.DescribeFormat();
  } catch (const cli::Refusal&) {
    // as it should
  }
  try {
    cli::ParseRecord({reinterpret_cast<const char*>(data), size}, "input");
    if (header.size() < 2) return 0;
    cli::ColumnChoice choice;
    choice.inputs = {header[0].empty() ? "all" : "*" + header[0].substr(1)};
    choice.responses = {header[1]};
    if (size % 4 < 2) choice.dates = {header[size % 4]};
    cli::ReadDesignTable(file.GetPath(), choice, size % 2 == 0);
  } catch (const cli::Refusal&) {
    // as it should
  }
  return 0;
}
