// Short texts and codes that need no file: cells of tables, dates, units, names, numbers in rows, UTF,
// the archive's integers. What has a second way is taken both ways; a difference ends the process.

#include "archive/integer_code.h"
#include "calculator/number_table.h"
#include "design/indexed_name.h"
#include "foundation/text.h"
#include "study/refusal.h"
#include "study/table/criterion_names.h"
#include "study/table/csv_cell.h"
#include "study/table/csv_reader.h"
#include "study/table/csv_writer.h"
#include "study/table/date_text.h"
#include "study/table/plain_lines.h"
#include "study/table/table_format.h"
#include "study/table/text_decoder.h"
#include "study/table/unit_text.h"

#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace study = corvath::study;
namespace archive = corvath::archive;
using corvath::utils::FromUtf8;
using corvath::utils::ToUtf8;

void Require(bool holds) {
  if (!holds) std::abort();
}

/// The C library reads the same number where it reads one of the plain form.
void CheckNumber(std::string_view text) {
  for (const auto decimal :
       {study::NumberFormat::Decimal::kPoint, study::NumberFormat::Decimal::kComma,
        study::NumberFormat::Decimal::kUndecided, study::NumberFormat::Decimal::kMixed}) {
    study::NumberFormat format(decimal);
    format.Read(text);
  }
  const study::CsvNumber number = study::ReadNumber(text);
  if (number.kind != study::CsvNumber::Kind::kNumber) {
    study::RefusalText(text, number.kind);
    return;
  }
  if (text.find_first_not_of("0123456789.eE+-") != std::string_view::npos) return;
  const std::string copy(text);
  char* end = nullptr;
  Require(std::strtod(copy.c_str(), &end) == number.value && *end == '\0');
}

void CheckCell(std::string_view text) {
  CheckNumber(text);
  study::MayBeThousands(text);
  study::IsMissing(text);
  study::Quoted(text);
  study::UnitOf(text);
  if (const auto date = study::ReadDate(text)) {
    // Four digits of a year.
    if (std::isfinite(date->days)) Require(date->days > -720000.0 && date->days < 2933000.0);
  } else {
    study::DateRefusalText(text);
  }
  const std::string name = study::IdentifierOf(std::string(text));
  if (study::CanBeUsed(FromUtf8(name))) Require(study::IdentifierOf(name) == name);
}

/// What is written reads back.
void CheckRecord(std::string_view text) {
  try {
    const auto cells = study::ParseRecord(text, "input");
    study::CsvText record;
    for (const std::string& cell : cells) record.Add(cell);
    // A lone empty cell is an empty line, as a file without cells is.
    Require(record.Get().empty() || study::ParseRecord(record.Get(), "input") == cells);
  } catch (const study::Refusal&) {
    // as it should
  }
  study::CsvText whole;
  whole.Add(text);
  const auto cells = study::ParseRecord(whole.Get(), "input");
  Require(text.empty() || (cells.size() == 1 && cells[0] == text));
}

void CheckLines(std::string_view text, bool complete) {
  const study::TableFormat format = study::FindTableFormat(text, complete);
  study::NameOfSeparator(format.separator);
  study::CountCells(text, format.separator);
  const auto count = study::CountPlainLines(text, 1000);
  if (!count) return;
  std::vector<std::string> cells;
  std::string_view line;
  std::size_t lines = 0;
  for (; study::TakeLine(text, line); ++lines) {
    study::SplitPlainLine(line, format.separator, cells);
    Require(cells.size() == study::CountCells(line, format.separator));
  }
  Require(lines == *count);
}

/// Pieces give what the whole gives.
void CheckDecoder(std::string_view bytes, std::size_t piece) {
  study::TextDecoder whole, parts;
  std::string text, joined;
  whole.Decode(bytes, true, text);
  piece = 4 + piece % 8;  // the first piece shows the encoding
  if (bytes.size() <= piece) return;
  parts.Decode(bytes.substr(0, piece), false, joined);
  parts.Decode(bytes.substr(piece), true, joined);
  if (parts.GetEncoding() != whole.GetEncoding()) return;  // it was guessed from less
  Require(joined == text && parts.GetFault() == whole.GetFault());
}

void CheckUnicode(std::string_view text) {
  const std::wstring wide = FromUtf8(text);
  Require(FromUtf8(ToUtf8(wide)) == wide);
  corvath::algorithm::datatypes::SplitIndexedName(wide).GetIndex();
}

void CheckInteger(const std::uint8_t* data, std::size_t size) {
  archive::IntegerDecoder decoder;
  for (std::size_t i = 0; i + 2 <= size; i += 2) {
    const auto step = decoder.Add(static_cast<std::uint16_t>(data[i] | data[i + 1] << 8));
    if (step == archive::IntegerDecoder::Step::kMore) continue;
    std::int64_t number = 0;
    if (step == archive::IntegerDecoder::Step::kInvalid || !archive::Narrow(decoder.Get(), number))
      return;
    char code[archive::kMaxIntegerBytes];
    const std::size_t length = archive::EncodeSigned(number, code);
    archive::IntegerDecoder again;
    for (std::size_t k = 0; k < length; k += 2)
      again.Add(static_cast<std::uint16_t>(static_cast<unsigned char>(code[k]) |
                                           static_cast<unsigned char>(code[k + 1]) << 8));
    std::int64_t same = 0;
    Require(archive::Narrow(again.Get(), same) && same == number && length <= i + 2);
    return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0] % 8) {
    case 0:
    case 1:
      CheckCell(text);
      break;
    case 2:
      CheckRecord(text);
      break;
    case 3:
      CheckLines(text, data[0] < 128);
      break;
    case 4:
      CheckDecoder(text, data[0] / 8);
      break;
    case 5:
      CheckUnicode(text);
      break;
    case 6:
      corvath::calculator::ParseNumberTable(text, data[0] / 64);
      break;
    default:
      CheckInteger(data + 1, size - 1);
  }
  return 0;
}
