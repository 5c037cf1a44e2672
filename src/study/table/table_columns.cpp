#include "study/table/table_columns.h"

#include "project/file/json_writing.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/date_text.h"
#include "study/table/name_hint.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace corvath::study {
namespace {

constexpr const wchar_t* kKey = L"table columns";
constexpr const char* kDayFirst = "day/month/year";
constexpr const char* kMonthFirst = "month/day/year";

TableColumn FromJson(const Json::Value& json) {
  TableColumn column;
  const auto text = [&](const char* key) {
    return json[key].isString() ? json[key].asString() : std::string();
  };
  if (json["words"].isArray())
    for (const Json::Value& word : json["words"])
      column.words.push_back(word.isString() ? word.asString() : std::string());
  column.is_date = text("days_since") == kDateOrigin;
  if (text("slashes") == kDayFirst) column.slashes = TableColumn::Slashes::kDayFirst;
  if (text("slashes") == kMonthFirst) column.slashes = TableColumn::Slashes::kMonthFirst;
  column.title = text("title");
  return column;
}

}  // namespace

double TableColumn::ReadCell(const std::string& cell, double number, bool is_number,
                             const std::string& place) const {
  if (is_date) {
    const auto date = ReadDate(cell);
    if (date && date->month_first) {
      const bool month_first = slashes == Slashes::kMonthFirst;
      if (slashes == Slashes::kNone)
        throw Refusal(place + ": " + Quoted(cell) +
                      " may be day/month or month/day; write 2024-01-31");
      const double days = month_first ? *date->month_first : date->days;
      if (std::isnan(days))
        throw Refusal(place + ": " + Quoted(cell) + " is no date as " +
                      (month_first ? kMonthFirst : kDayFirst) +
                      ", as the project was trained; write 2024-01-31");
      return days;
    }
    // Eight digits may be days as well, but not of the next 270,000 years.
    if (date) return date->days;
    if (!is_number) throw Refusal(place + ": " + DateRefusalText(cell));
    return number;
  }
  if (is_number) return number;
  const auto found = std::find(words.begin(), words.end(), Trimmed(cell));
  if (found == words.end())
    throw Refusal(place + ": " + Quoted(cell) + " is no value of this input; " +
                  NameHint(std::string(Trimmed(cell)), words, "it takes"));
  return static_cast<double>(found - words.begin());
}

Json::Value TableColumn::ToJson() const {
  Json::Value json(Json::objectValue);
  for (const std::string& word : words) json["words"].append(word);
  if (is_date) json["days_since"] = kDateOrigin;
  if (slashes == Slashes::kDayFirst) json["slashes"] = kDayFirst;
  if (slashes == Slashes::kMonthFirst) json["slashes"] = kMonthFirst;
  if (!title.empty()) json["title"] = title;
  return json;
}

std::string TableColumn::WordOf(double code) const {
  if (!(code >= 0.0 && code < static_cast<double>(words.size())) || code != std::floor(code))
    return {};
  return words[static_cast<std::size_t>(code)];
}

TableColumns TableColumns::FromProject(const corvath::algorithm::datatypes::VRDB& project) {
  TableColumns columns;
  if (!project.HasMetaData(kKey)) return columns;
  const std::string& text = project.GetMetaData(kKey);
  Json::Value json;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  try {
    if (!reader->parse(text.data(), text.data() + text.size(), &json, nullptr) || !json.isObject())
      return columns;
  } catch (const Json::Exception&) {  // nested too deep
    return columns;
  }
  for (const std::string& name : json.getMemberNames())
    if (json[name].isObject()) columns.columns_[name] = FromJson(json[name]);
  return columns;
}

void TableColumns::Store(corvath::algorithm::datatypes::VRDB& project) const {
  if (columns_.empty()) return;
  Json::Value json(Json::objectValue);
  for (const auto& [name, column] : columns_) json[name] = column.ToJson();
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  project.SetMetaData(kKey, algorithm::datatypes::WriteJson(builder, json));
}

const TableColumn* TableColumns::Find(const std::string& name) const {
  const auto found = columns_.find(name);
  return found == columns_.end() ? nullptr : &found->second;
}

void TableColumns::Rename(const std::string& name, const std::string& new_name) {
  TableColumn column;
  const auto found = columns_.find(name);
  if (found != columns_.end()) {
    column = std::move(found->second);
    columns_.erase(found);
  }
  column.title = name;
  columns_[new_name] = std::move(column);
}

std::string WordsText(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i)
    text += (i == 0 ? "" : ", ") + std::to_string(i) + ' ' + words[i];
  return text;
}

}  // namespace corvath::study
