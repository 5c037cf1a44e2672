#include "study/table/name_hint.h"

#include "study/table/csv_cell.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <numeric>

namespace corvath::study {
namespace {

constexpr std::size_t kMaxListed = 8;
constexpr std::size_t kLongest = 100;  ///< of names that are compared letter by letter

/// Another digit makes another name, x1 and x2, rather than a slip.
std::size_t ReplacementCost(char a, char b) {
  if (a == b) return 0;
  return std::isdigit(static_cast<unsigned char>(a)) != 0 ? 2 : 1;
}

/// Fewest letters to insert, drop, replace or swap with their neighbour (each at most once):
/// optimal string alignment.
std::size_t Distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> before_last(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    before_last.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min(
          {last[j] + 1, row[j - 1] + 1, last[j - 1] + ReplacementCost(a[i - 1], b[j - 1])});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], before_last[j - 2] + 1);
    }
  }
  return row.back();
}

}  // namespace

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

const std::string* FindNear(const std::string& name, const std::vector<std::string>& names) {
  const std::string wanted = Lower(name);
  const std::string* best = nullptr;
  std::size_t least = std::min<std::size_t>(name.size() / 3, 3) + 1;
  for (const std::string& candidate : names) {
    const std::string lower = Lower(candidate.substr(0, kLongest + 1));
    std::size_t distance = lower == wanted ? 0 : least;
    if (distance > 0 && std::max(wanted.size(), lower.size()) <= kLongest &&
        std::max(wanted.size(), lower.size()) < std::min(wanted.size(), lower.size()) + least)
      distance = Distance(wanted, lower);
    if (distance >= least) continue;
    least = distance;
    best = &candidate;
  }
  return best;
}

std::string NameHint(const std::string& name, const std::vector<std::string>& names,
                     const std::string& list) {
  if (const std::string* const near = FindNear(name, names))
    return "did you mean " + Quoted(*near) + '?';
  std::string text = list;
  for (std::size_t i = 0; i < names.size() && i < kMaxListed; ++i)
    text += (i == 0 ? " " : ", ") + Quoted(names[i]);
  return names.size() > kMaxListed ? text + ", ..." : text;
}

}  // namespace corvath::study
