#include "study/table/column_choice.h"

#include "design/indexed_name.h"
#include "foundation/text.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"

#include <algorithm>

namespace corvath::study {
namespace {

using Names = std::vector<std::string>;

/// Whether `name` fits a pattern with * for any letters and ? for one; bytes beyond ASCII count one
/// by one. The last * alone is tried again: the time is at most the product of the lengths.
bool Fits(const std::string& name, const std::string& pattern) {
  std::size_t n = 0;
  std::size_t p = 0;
  std::size_t star = std::string::npos;
  std::size_t retry = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      retry = n;
    } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
      ++p;
      ++n;
    } else if (star != std::string::npos) {
      p = star + 1;
      n = ++retry;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string::npos;
}

/// The names of an option, where patterns stand for those of `columns` that fit and are none of
/// `others`.
class Expansion {
 public:
  Expansion(std::string option, const Names& columns, bool knows_all)
      : option_(std::move(option)), columns_(columns), knows_all_(knows_all) {}

  /// The names of `texts` that are no patterns.
  Names FindPlain(const Names& texts) const {
    Names plain;
    for (const std::string& text : texts)
      if (!IsPattern(text)) plain.push_back(text);
    return plain;
  }

  Names Run(const Names& texts, const Names& others) const {
    Names names;
    for (const std::string& text : texts) {
      if (!IsPattern(text)) {
        if (!Contains(names, text)) names.push_back(text);
        continue;
      }
      bool any = false;
      for (const std::string& column : columns_) {
        if (column.empty() || !Fits(column, text == "all" ? "*" : text)) continue;
        if (Contains(others, column)) continue;
        any = true;
        if (!Contains(names, column)) names.push_back(column);
      }
      if (!any)
        throw Refusal(option_ + ": " + Quoted(text) + " fits no column; " +
                      NameHint(text, columns_, "the columns are"));
    }
    return names;
  }

 private:
  bool IsPattern(const std::string& text) const {
    if (Contains(columns_, text)) return false;
    return text.find_first_of("*?") != std::string::npos || (knows_all_ && text == "all");
  }

  std::string option_;
  const Names& columns_;
  bool knows_all_;
};

void RequireApart(const ColumnChoice& choice) {
  using corvath::utils::ToUtf8;
  for (const std::string& name : choice.responses)
    if (Contains(choice.inputs, name))
      throw Refusal(Quoted(name) + " is both an input and a response");
  for (const std::string& name : choice.responses) {
    const auto parts =
        corvath::algorithm::datatypes::SplitIndexedName(corvath::utils::FromUtf8(name));
    const std::string base = ToUtf8(parts.base);
    if (parts.GetIndex() && (Contains(choice.inputs, base) || Contains(choice.responses, base)))
      throw Refusal(Quoted(name) + " is an element of the vector " + Quoted(base) +
                    ", which is a column of its own");
  }
}

}  // namespace

bool Contains(const Names& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

ColumnChoice ColumnChoice::Resolve(const std::vector<std::string>& header) const {
  ColumnChoice resolved;
  resolved.wording = wording;
  const auto option = [this](const char* key) { return OptionName(wording, key); };
  const Expansion of_inputs(option("inputs"), header, true);
  Names others = of_inputs.FindPlain(inputs);
  Names left_out = Expansion(option("ignored"), header, false).Run(ignored, {});
  others.insert(others.end(), left_out.begin(), left_out.end());
  resolved.responses = Expansion(option("responses"), header, false).Run(responses, others);
  left_out.insert(left_out.end(), resolved.responses.begin(), resolved.responses.end());
  resolved.inputs = of_inputs.Run(inputs, left_out);
  RequireApart(resolved);
  resolved.discrete = Expansion(option("discrete"), resolved.inputs, true).Run(discrete, {});
  for (const std::string& name : resolved.discrete)
    if (!Contains(resolved.inputs, name))
      throw Refusal(option("discrete") + ": " + Quoted(name) + " is no input; " +
                    NameHint(name, resolved.inputs, "the inputs are"));
  Names all = resolved.inputs;
  all.insert(all.end(), resolved.responses.begin(), resolved.responses.end());
  resolved.dates = Expansion(option("dates"), all, false).Run(dates, {});
  for (const std::string& name : resolved.dates)
    if (!Contains(all, name))
      throw Refusal(option("dates") + ": " + Quoted(name) +
                    " is neither an input nor a response; " + NameHint(name, all, "there are"));
  return resolved;
}

}  // namespace corvath::study
