#include "design/designs/indexed_responses.h"

#include "design/indexed_name.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {

namespace {

using Value = math::Variant<double>;

constexpr std::int64_t kMaxElements = std::int64_t{1} << 20;

/// The number of a response that can be an element: NaN for one without a value, nothing for a
/// text or for a value of several elements.
std::optional<Value::Complex> ElementNumber(const CDesignEntry& value) {
  const auto* variant = value.Peek<Value>();
  if (variant && variant->IsScalar()) return variant->GetScalar();
  if (value.IsUninitialized()) return std::numeric_limits<double>::quiet_NaN();
  if (value.Peek<std::wstring>() || (variant && !variant->IsBoolean())) return std::nullopt;
  return value.ToDouble();
}

struct Element {
  std::size_t index;
  Value::Complex number;
};

/// A vector in the making.
struct Merged {
  std::size_t position;  ///< of its base name among the merged responses
  std::vector<Element> elements;
};

Value MakeVector(const std::vector<Element>& elements) {
  std::size_t size = 0;
  for (const Element& element : elements) size = std::max(size, element.index + 1);
  Value::Vector vector(size, std::numeric_limits<double>::quiet_NaN());
  for (const Element& element : elements) vector[element.index] = element.number;
  return Value(std::move(vector));
}

}  // namespace

EntrySequence MergeIndexedResponses(EntrySequence responses) {
  EntrySequence merged;
  merged.SetHeader(responses.GetHeader());
  std::map<std::wstring, Merged> vectors;
  for (auto& [name, value] : responses) {
    const SplitName parts = SplitIndexedName(name);
    const std::optional<std::int64_t> index = parts.GetIndex();
    const bool is_element = index && *index >= 0 && *index < kMaxElements;
    const auto number = is_element ? ElementNumber(value) : std::nullopt;
    if (!number) {
      merged.Append(name, std::move(value));
      continue;
    }
    const auto [vector, is_first] = vectors.try_emplace(parts.base, Merged{merged.size(), {}});
    if (is_first) merged.Append(parts.base, CDesignEntry());
    vector->second.elements.push_back({static_cast<std::size_t>(*index), *number});
  }
  for (const auto& [base, vector] : vectors)
    merged[vector.position].second = CDesignEntry(MakeVector(vector.elements));
  return merged;
}

}  // namespace corvath::algorithm::datatypes
