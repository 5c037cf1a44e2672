// The lines of entries.txt.

#include "design/designs/design_entry.h"
#include "design/indexed_name.h"
#include "design/parameters/discrete_states.h"
#include "support/files.h"
#include "support/read_value.h"

namespace {

using namespace corvath::algorithm::datatypes;
using Entry = CDesignEntry;
using Type = corvath::enums::DesignEntry;
using Words = std::vector<std::string>;
using corvath::utils::FromUtf8, corvath::utils::ToUtf8;

/// What stands between the marks around a text or a value.
std::string Inner(const std::string& word) {
  return word.substr(1, word.size() - 2);
}

Entry ReadEntry(const std::string& word) {
  if (word == "none") return Entry();
  if (word == "true" || word == "false") return Entry(word == "true");
  if (word[0] == '"') return Entry(FromUtf8(Inner(word)));
  if (word[0] == '<') return Entry(support::ReadValue(Inner(word)));
  if (word.find_first_not_of("+-0123456789") == std::string::npos) return Entry(std::stoll(word));
  return Entry(std::strtod(word.c_str(), nullptr));
}

/// The operation that the words name.
Entry Compute(const Words& words) {
  Entry a = ReadEntry(words.at(0));
  const std::string& operation = words.at(1);
  if (operation == "nearest") {
    std::vector<Entry> states;
    std::transform(words.begin() + 2, words.end(), std::back_inserter(states), ReadEntry);
    return NearestDiscreteState(a, states);
  }
  const Entry b = ReadEntry(words.at(2));
  if (operation == "-") return a - b;
  if (operation == "<") return Entry(a < b);
  const bool is_forced = words.size() == 5;
  const auto forced = !is_forced              ? Type::UNINITIALIZED
                      : words[4] == "INTEGER" ? Type::INTEGER
                                              : Type::BOOL;
  a.Assign(b, words.back() == "parsed", forced);
  return a;
}

/// Words without an outcome.
void Check(const Words& words) {
  const Entry a = ReadEntry(words.at(0)), b = ReadEntry(words.at(2));
  const std::string& relation = words[1];
  if (relation == "==" || relation == "!=") {
    EXPECT_EQ(a == b, relation == "==");
  } else if (relation == "<" || relation == ">=") {
    EXPECT_EQ(a < b, relation == "<");
  } else if (relation == "named") {
    const auto parts = SplitIndexedName(a.ToString());
    EXPECT_EQ(parts.base, b.ToString());
    EXPECT_EQ(parts.GetIndex() ? Entry(*parts.GetIndex()) : Entry(), ReadEntry(words.at(3)));
  } else {
    EXPECT_EQ(Entry(a.ToDouble()), b);
    EXPECT_EQ(a.ToInteger(), std::stoll(words.at(3)));
    EXPECT_EQ(a.ToBool(), words.at(4) == "true");
    EXPECT_EQ('"' + ToUtf8(a.ToString()) + '"', words.at(5));
  }
}

TEST(DesignEntry, FollowsTheLinesOfTheFile) {
  std::istringstream file(support::ReadFile(TEST_ENTRIES));
  const std::regex word(R"("[^"]*"|<[^<> ]*>|\S+)");
  int num_lines = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.substr(0, 2) == "//") continue;
    ++num_lines;
    SCOPED_TRACE(line);
    const std::size_t arrow = std::min(line.find(" => "), line.find(" !> "));
    const std::string left = line.substr(0, arrow);
    const Words words(std::sregex_token_iterator(left.begin(), left.end(), word), {});
    if (arrow == std::string::npos) {
      Check(words);
    } else if (line[arrow + 1] == '!') {
      EXPECT_MESSAGE(line.substr(arrow + 4), Compute(words));
    } else {  // equality of entries is that of numbers; the type counts, too
      const Entry expected = ReadEntry(line.substr(arrow + 4)), found = Compute(words);
      EXPECT_EQ(found.GetType(), expected.GetType());
      EXPECT_EQ(found, expected);
    }
  }
  EXPECT_GT(num_lines, 100);
}

}  // namespace
