#pragma once

#include "project/vrdb.h"

#include <json/json.h>

#include <map>
#include <string>
#include <vector>

namespace corvath::study {

/// What the columns of the table were from which a project was trained, as far as the project's
/// numbers do not tell. By the names that inputs and responses have in the project.
struct TableColumn {
  enum class Slashes { kNone, kDayFirst, kMonthFirst };

  std::vector<std::string> words;    ///< of an input of words: their codes are the positions
  bool is_date = false;              ///< the number counts days since kDateOrigin
  Slashes slashes = Slashes::kNone;  ///< what 01/02/2024 means
  std::string title;                 ///< of the column, if the project has another name for it

  /// Whether its cells may be other than numbers.
  bool IsRead() const { return is_date || !words.empty(); }
  /// The number of a cell: the code of a word, the days of a date, or a number as it is.
  /// @param number  what the cell is as a number
  /// @throws Refusal  none of these. @param place  begins the message
  double ReadCell(const std::string& cell, double number, bool is_number,
                  const std::string& place) const;
  /// What there is to tell: "words", "days_since", "slashes", "title".
  Json::Value ToJson() const;
  /// The word of a code; empty if there is none.
  std::string WordOf(double code) const;
};

/// The columns of a project. They stand as JSON in its meta data, which programs that do not know
/// them pass on: {"material": {"words": ["brass", "steel"]}, "day": {"days_since": "1970-01-01"},
/// "load_kN": {"title": "load [kN]"}}.
class TableColumns {
 public:
  /// Of a project that has none, or whose text is no such JSON: empty.
  static TableColumns FromProject(const corvath::algorithm::datatypes::VRDB& project);
  void Store(corvath::algorithm::datatypes::VRDB& project) const;

  /// Null if there is nothing to tell about it.
  const TableColumn* Find(const std::string& name) const;
  TableColumn& operator[](const std::string& name) { return columns_[name]; }
  const std::map<std::string, TableColumn>& GetAll() const { return columns_; }
  void Rename(const std::string& name, const std::string& new_name);

 private:
  std::map<std::string, TableColumn> columns_;
};

/// "0 brass, 1 steel": the codes of words.
std::string WordsText(const std::vector<std::string>& words);

}  // namespace corvath::study
