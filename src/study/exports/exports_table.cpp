#include "study/exports/call_frame.h"
#include "study/exports/handles.h"
#include "study/options.h"

#include <limits>

namespace api = corvath::study::api;

using corvath::study::MemoryTable;
using corvath::study::Options;
using corvath::study::Refusal;

namespace {

/// `n` values of the caller's. @throws Refusal  there cannot be so many, or they are null
template <class T>
const T* RequireValues(const T* values, std::size_t n) {
  if (n > std::numeric_limits<std::size_t>::max() / 2 / sizeof(T))
    throw Refusal("n: " + std::to_string(n) + " values cannot be");
  if (n > 0) api::Require(values, "values");
  return values;
}

/// UTF-8 as it stands; no other text is a file's or a message's.
std::string Text(const char* text) {
  return corvath::utils::ToUtf8(corvath::utils::FromUtf8(text));
}

}  // namespace

int zelstudy_table_new(zelstudy_table** out) {
  return api::CallFor(out, [] { return std::make_unique<zelstudy_table>(); });
}

int zelstudy_table_add_numbers(zelstudy_table* table, const char* name, const double* values,
                               size_t n) {
  return api::Call([&] {
    const double* const begin = RequireValues(values, n);
    api::Require(table, "table")
        .table.AddNumbers(Text(&api::Require(name, "name")),
                          n == 0 ? std::vector<double>() : std::vector<double>(begin, begin + n));
  });
}

int zelstudy_table_add_texts(zelstudy_table* table, const char* name, const char* const* values,
                             size_t n) {
  return api::Call([&] {
    RequireValues(values, n);
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < n; ++i)
      texts.push_back(values[i] == nullptr ? std::string() : Text(values[i]));
    api::Require(table, "table")
        .table.AddTexts(Text(&api::Require(name, "name")), std::move(texts));
  });
}

int zelstudy_table_set_unit(zelstudy_table* table, const char* name, const char* unit) {
  return api::Call([&] {
    api::Require(table, "table")
        .table.SetUnit(Text(&api::Require(name, "name")), unit == nullptr ? "" : Text(unit));
  });
}

int zelstudy_table_read_csv(const char* path, const char* options, zelstudy_table** out) {
  return api::CallFor(out, [&] {
    const Options none(options, {});
    const std::string file = &api::Require(path, "path");
    if (file == "-") throw Refusal("path: a file is wanted, not standard input");
    return std::make_unique<zelstudy_table>(zelstudy_table{MemoryTable::ReadCsv(file)});
  });
}

int zelstudy_table_describe(const zelstudy_table* table, zelstudy_result** out) {
  return api::CallFor(
      out, [&] { return api::MakeResult(api::Require(table, "table").table.Describe()); });
}

void zelstudy_table_close(zelstudy_table* table) {
  delete table;
}
