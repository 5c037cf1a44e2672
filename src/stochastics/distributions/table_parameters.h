#pragma once

#include <Eigen/Core>

#include <algorithm>
#include <string>
#include <vector>

namespace corvath::algorithm {

/// Names of the parameters of a table of `rows` rows: "Value", "Probability", "Value", ...
inline std::vector<std::wstring> TableParameterNames(Eigen::Index rows) {
  std::vector<std::wstring> names;
  for (Eigen::Index i = 0; i < rows; ++i) {
    names.emplace_back(L"Value");
    names.emplace_back(L"Probability");
  }
  return names;
}

/// The size that a stored table of `size` numbers must have: pairs, at least two of them.
inline Eigen::Index WholeTable(Eigen::Index size) {
  return std::max<Eigen::Index>(size - size % 2, 4);
}

}  // namespace corvath::algorithm
