// Tables of the program zel: records, cells, and the designs of a table whose first column is taken
// for an input and whose second for a response.

#include "commands.h"
#include "csv_cell.h"
#include "csv_reader.h"
#include "design_table.h"
#include "memory_file.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  cli::CsvReader::Record header;
  try {
    cli::CsvReader(file.GetPath())
        .ReadAll([&](std::uint64_t, const cli::CsvReader::Record& record) {
          if (header.empty()) header = record;
          for (const std::string& cell : record) {
            const cli::CsvNumber number = cli::ReadNumber(cell);
            if (number.kind != cli::CsvNumber::Kind::kNumber) cli::RefusalText(cell, number.kind);
          }
        });
  } catch (const cli::Refusal&) {
    // as it should
  }
  try {
    cli::ParseRecord({reinterpret_cast<const char*>(data), size}, "input");
    if (header.size() > 1)
      cli::ReadDesignTable(file.GetPath(), {header[0]}, {header[1]}, {header[0]});
  } catch (const cli::Refusal&) {
    // as it should
  }
  return 0;
}
