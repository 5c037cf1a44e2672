#include "design/designs/design_manager.h"
#include "design/name_positions.h"
#include "foundation/closeness.h"

#include <boost/container_hash/hash.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <unordered_map>
#include <utility>

namespace corvath::algorithm::datatypes {

namespace {

/// Relative difference up to which two values are the same parameter value.
constexpr double kTolerance = 2.220446049250313e-14;

/// The compared parameters of designs, one row per design.
class Cells {
 public:
  explicit Cells(std::vector<std::wstring> names) : names_(std::move(names)) {}

  void Add(const Design& design) {
    const EntrySequence& parameters = design.GetParameters();
    bool is_complete = true;
    for (const std::size_t position : names_.In(parameters)) {
      const bool exists = position != EntrySequence::npos;
      cells_.push_back(exists ? &parameters[position].second : nullptr);
      is_complete = is_complete && exists;
    }
    is_complete_.push_back(is_complete);
  }

  std::size_t NumColumns() const { return names_.GetNames().size(); }
  std::size_t NumRows() const { return is_complete_.size(); }
  const CDesignEntry* At(std::size_t row, std::size_t column) const {
    return cells_[row * NumColumns() + column];
  }
  /// Whether the row's design has every compared parameter.
  bool IsComplete(std::size_t row) const { return is_complete_[row]; }

  bool AreEqual(std::size_t a, std::size_t b) const {
    for (std::size_t k = 0; k < NumColumns(); ++k)
      if (!IsClose(*At(a, k), *At(b, k), kTolerance)) return false;
    return true;
  }

 private:
  NamePositions<EntrySequence> names_;
  std::vector<const CDesignEntry*> cells_;
  std::vector<bool> is_complete_;
};

/// Whether equality of this entry with others of its kind is closeness of their ToDouble().
bool IsNumber(const CDesignEntry& entry) {
  const auto* variant = entry.Peek<CDesignEntry::Variant>();
  if (variant) return variant->IsScalar() || variant->IsBoolean();
  return !entry.IsUninitialized() && !entry.Peek<std::wstring>();
}

/// A number per row, the same for rows whose numbers in `column` are equal within the tolerance.
/// The numbers are sorted, and a new group begins where a neighbour is too far away: between two
/// equal ones there is no such gap. Twice the tolerance leaves room for rounding.
std::vector<std::size_t> GroupNumbers(const Cells& cells, std::size_t column,
                                      const std::vector<std::size_t>& rows) {
  std::vector<std::pair<double, std::size_t>> sorted;
  std::vector<std::size_t> groups(cells.NumRows(), 0);
  for (const std::size_t row : rows) {
    const double number = cells.At(row, column)->ToDouble();
    if (std::isfinite(number)) sorted.emplace_back(number, row);  // others equal nothing
  }
  std::sort(sorted.begin(), sorted.end());
  const auto is_tiny = [](double x) { return std::abs(x) < 2.0 * math::kEps; };
  std::size_t group = 1;
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    const double number = sorted[i].first;
    if (i > 0 && !math::IsClose(sorted[i - 1].first, number, 2.0 * kTolerance) &&
        !(is_tiny(sorted[i - 1].first) && is_tiny(number)))
      ++group;
    groups[sorted[i].second] = group;
  }
  return groups;
}

/// A key per row: rows that match have the same key. A column takes part when all its entries are
/// numbers or all are texts; the comparison of the rows decides in the end.
std::vector<std::size_t> MakeKeys(const Cells& cells) {
  std::vector<std::size_t> rows;
  for (std::size_t row = 0; row < cells.NumRows(); ++row)
    if (cells.IsComplete(row)) rows.push_back(row);
  std::vector<std::size_t> keys(cells.NumRows(), 0);
  for (std::size_t k = 0; k < cells.NumColumns(); ++k) {
    const auto all_are = [&](auto test) {
      return std::all_of(rows.begin(), rows.end(),
                         [&](std::size_t row) { return test(*cells.At(row, k)); });
    };
    if (all_are(IsNumber)) {
      const std::vector<std::size_t> groups = GroupNumbers(cells, k, rows);
      for (const std::size_t row : rows) boost::hash_combine(keys[row], groups[row]);
    } else if (all_are([](const CDesignEntry& entry) { return entry.Peek<std::wstring>(); })) {
      for (const std::size_t row : rows)
        boost::hash_combine(keys[row],
                            std::hash<std::wstring>()(*cells.At(row, k)->Peek<std::wstring>()));
    }
  }
  return keys;
}

}  // namespace

std::vector<DesignId> DesignManager::ExtractDesignNumbers(
    const std::vector<Design>& wanted, bool reverse,
    const std::set<std::wstring>& ignored_names) const {
  if (designs_.empty() || wanted.empty())
    throw std::domain_error("Can't extract designs numbers from an empty design container.");
  if (designs_.front().GetParameters().size() != wanted.front().GetParameters().size())
    throw std::domain_error(
        "Number of parameters in design container doesn't fit to parameter value matrix.");

  std::vector<std::wstring> names;
  for (const auto& parameter : wanted.front().GetParameters())
    if (ignored_names.count(parameter.first) == 0) names.push_back(parameter.first);
  Cells cells(std::move(names));
  for (const Design& design : designs_) cells.Add(design);
  for (const Design& design : wanted) cells.Add(design);
  const std::vector<std::size_t> keys = MakeKeys(cells);

  std::unordered_map<std::size_t, std::vector<std::size_t>> candidates;
  for (std::size_t i = 0; i < designs_.size(); ++i) {
    const std::size_t row = reverse ? designs_.size() - 1 - i : i;
    if (cells.IsComplete(row)) candidates[keys[row]].push_back(row);
  }
  std::vector<DesignId> ids(wanted.size());
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const std::size_t row = designs_.size() + i;
    const auto bucket = cells.IsComplete(row) ? candidates.find(keys[row]) : candidates.end();
    if (bucket == candidates.end()) continue;
    for (const std::size_t candidate : bucket->second) {
      if (!cells.AreEqual(candidate, row)) continue;
      ids[i] = designs_[candidate].GetId();
      break;
    }
  }
  return ids;
}

}  // namespace corvath::algorithm::datatypes
