#pragma once

#include "exchange/project_description.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvath::exchange {

/// Identifiers made of names, each once. The rule: ASCII letters and digits stay; every run of other
/// characters becomes one "_", none at the ends; of a longer text the first 48 characters stay, of
/// an empty one "x". Where a name comes to an identifier that is taken, "_2" is added, or the next
/// number that is free. So they depend on the names and their order alone.
class Identifiers {
 public:
  /// @param taken  identifiers that no name gets
  explicit Identifiers(std::set<std::string> taken = {}) : taken_(std::move(taken)) {}
  std::string Make(std::string_view name);

 private:
  std::set<std::string> taken_;
  std::map<std::string, std::size_t> next_;  ///< the number to try
};

/// Those of a project, by position.
struct ProjectIdentifiers {
  std::vector<std::string> responses;
  std::vector<std::string> criteria;
};
ProjectIdentifiers IdentifiersOf(const ProjectDescription& project);

/// An identifier of its own, as the rule has it; one that would begin with a digit gets "m_" before
/// it.
std::string PrefixOf(std::string_view name);

}  // namespace corvath::exchange
