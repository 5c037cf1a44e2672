#include "design/designs/design_manager.h"
#include "design/indexed_name.h"
#include "design/name_positions.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <utility>

namespace corvath::algorithm::datatypes {

namespace {

using Value = math::Variant<double>;

constexpr std::int64_t kNoColumn = -1;

/// Width of one name while the designs are walked.
class Width {
 public:
  void OnSignal() { width_ = kNoColumn; }

  /// A value of `width`, or kNoColumn for one without numbers.
  void OnValue(std::int64_t width, bool keep_largest) {
    if (!width_ || *width_ == kNoColumn)
      width_ = width;
    else if (width != kNoColumn && width != *width_) {
      is_ambiguous_ = is_ambiguous_ || !keep_largest;
      width_ = std::max(*width_, width);
    }
  }

  bool IsListed() const { return width_ && !is_ambiguous_; }
  std::int64_t Get() const { return *width_; }

 private:
  std::optional<std::int64_t> width_;
  bool is_ambiguous_ = false;
};

void AddValue(Width& width, const CDesignEntry& value, bool keep_largest, bool with_matrices) {
  const auto* variant = value.Peek<Value>();
  if (value.IsUninitialized())
    width.OnValue(kNoColumn, keep_largest);
  else if (!variant || variant->IsScalar() || variant->IsBoolean())
    width.OnValue(0, keep_largest);
  else if (variant->HasTimeline())
    width.OnSignal();
  else if (variant->Size() == 0 || (variant->IsMatrix() && !with_matrices))
    width.OnValue(kNoColumn, keep_largest);
  else
    width.OnValue(static_cast<std::int64_t>(variant->Size()), keep_largest);
}

NamePositions<EntrySequence> PositionsOf(const ResponseWidths& widths) {
  std::vector<std::wstring> names;
  names.reserve(widths.size());
  for (const ResponseWidth& response : widths) names.push_back(response.first);
  return NamePositions<EntrySequence>(std::move(names));
}

ResponseWidths CollectWidths(const std::vector<Design>& designs, const EntrySequence& responses,
                             bool keep_largest, bool with_matrices) {
  ResponseWidths result;
  for (const auto& response : responses) result.emplace_back(response.first, kNoColumn);
  NamePositions<EntrySequence> names = PositionsOf(result);
  std::vector<Width> widths(result.size());
  for (const Design& design : designs) {
    const std::vector<std::size_t>& positions = names.In(design.GetResponses());
    for (std::size_t k = 0; k < widths.size(); ++k)
      if (positions[k] != EntrySequence::npos)
        AddValue(widths[k], design.GetResponses()[positions[k]].second, keep_largest,
                 with_matrices);
  }
  std::size_t listed = 0;
  for (std::size_t k = 0; k < widths.size(); ++k) {
    if (!widths[k].IsListed()) continue;
    if (listed != k) result[listed].first = std::move(result[k].first);
    result[listed++].second = widths[k].Get();
  }
  result.resize(listed);
  return result;
}

/// Columns that a name takes.
std::int64_t NumColumns(std::int64_t width) {
  return width < 0 ? 0 : std::max<std::int64_t>(width, 1);
}

/// Number of elements of a value that stand in the columns of its name.
std::int64_t NumElements(const CDesignEntry& value, std::int64_t num_columns) {
  const auto* variant = value.Peek<Value>();
  if (!variant || !(variant->IsVector() || variant->IsMatrix())) return 1;
  return std::min(static_cast<std::int64_t>(variant->Size()), num_columns);
}

}  // namespace

ResponseWidths DesignManager::GetResponseWidths(bool keep_largest) const {
  return CollectWidths(designs_, GetTemplate()->GetResponses(), keep_largest,
                       /*with_matrices=*/true);
}

ResponseWidths DesignManager::GetModelResponseWidths() const {
  ResponseWidths widths = CollectWidths(designs_, GetTemplate()->GetResponses(),
                                        /*keep_largest=*/true, /*with_matrices=*/false);
  widths.erase(std::remove_if(widths.begin(), widths.end(),
                              [](const ResponseWidth& width) { return width.second == kNoColumn; }),
               widths.end());
  return widths;
}

std::vector<std::wstring> DesignManager::GetResponseNames(const ResponseWidths& widths) {
  std::vector<std::wstring> names;
  for (const auto& [name, width] : widths) {
    if (width == 0) names.push_back(name);
    for (std::int64_t i = 0; i < width; ++i)
      names.push_back(IndexedName(name, static_cast<std::uint64_t>(i)));
  }
  return names;
}

Eigen::MatrixXd DesignManager::GetResponseMatrix(const ResponseWidths& widths) const {
  Eigen::Index num_columns = 0;
  for (const ResponseWidth& width : widths) num_columns += NumColumns(width.second);
  Eigen::MatrixXd matrix =
      Eigen::MatrixXd::Constant(static_cast<Eigen::Index>(designs_.size()), num_columns,
                                std::numeric_limits<double>::quiet_NaN());
  NamePositions<EntrySequence> names = PositionsOf(widths);
  Eigen::Index row = 0;
  for (const Design& design : designs_) {
    const std::vector<std::size_t>& positions = names.In(design.GetResponses());
    Eigen::Index column = 0;
    for (std::size_t k = 0; k < widths.size(); ++k) {
      const std::int64_t width = NumColumns(widths[k].second);
      if (positions[k] != EntrySequence::npos) {
        const CDesignEntry& value = design.GetResponses()[positions[k]].second;
        const std::int64_t num_elements = std::min(NumElements(value, width), width);
        for (std::int64_t i = 0; i < num_elements; ++i)
          matrix(row, column + i) = value.GetElement(static_cast<std::size_t>(i));
      }
      column += width;
    }
    ++row;
  }
  return matrix;
}

}  // namespace corvath::algorithm::datatypes
