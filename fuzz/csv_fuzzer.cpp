// Tables of the program zel: records, cells, and the designs of a table whose first column is taken
// for an input (with the others that fit its name as a pattern) and whose second for a response. On a
// short table a model is trained, and asked at its designs.

#include "memory_file.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/csv_reader.h"
#include "study/table/date_text.h"
#include "study/table/design_table.h"
#include "study/train/training.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace study = corvath::study;

constexpr std::ptrdiff_t kMaxTrained = 60;  // numbers of inputs: a training takes milliseconds

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  study::CsvReader::Record header;
  try {
    study::CsvReader reader(file.GetPath());
    reader.ReadAll([&](std::uint64_t, const study::CsvReader::Record& record) {
      if (header.empty()) header = record;
      for (const std::string& cell : record) {
        const study::CsvNumber number = reader.ReadNumber(cell);
        if (number.kind != study::CsvNumber::Kind::kNumber) study::RefusalText(cell, number.kind);
        study::ReadDate(cell);
      }
    });
    reader.DescribeFormat();
  } catch (const study::Refusal&) {
    // as it should
  }
  try {
    study::ParseRecord({reinterpret_cast<const char*>(data), size}, "input");
    if (header.size() < 2) return 0;
    study::ColumnChoice choice;
    choice.inputs = {header[0].empty() ? "all" : "*" + header[0].substr(1)};
    choice.responses = {header[1]};
    if (size % 4 < 2) choice.dates = {header[size % 4]};
    study::CsvReader reader(file.GetPath());
    study::TrainRequest request;
    request.columns = choice;
    request.skip_incomplete = size % 2 == 0;
    request.budget = size % 8 == 2 ? 0.02 : 1e-4;  // seconds
    study::Training training(reader, request);
    if (training.GetTable().data.points.size() > kMaxTrained) return 0;
    training.Run([](double, const std::string&) { return true; });
    training.GetDocument();
  } catch (const study::Refusal&) {
    // as it should
  }
  return 0;
}
