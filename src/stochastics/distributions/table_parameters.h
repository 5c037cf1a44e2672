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

/// Pairs, at least two of them; otherwise `raise` gets what is wrong.
template <class Raise>
void RequireTable(Eigen::Index size, const Raise& raise) {
  if (size < 4)
    raise(L": Wrong number of statistical parameters. Expected at least 4, obtained: " +
          std::to_wstring(size));
  if (size % 2 != 0)
    raise(L": Number of distribution parameters should be even " + std::to_wstring(size));
}

/// The numbers of a sample in ascending order: one column of at least two; otherwise as RequireTable.
template <class Raise>
Eigen::VectorXd SortedSample(const Eigen::MatrixXd& data, const Raise& raise) {
  if (data.cols() != 1)
    raise(L": Wrong number of data columns. Expected: 1, obtained: " +
          std::to_wstring(data.cols()));
  if (data.rows() < 2) raise(L": Not enough data points available. ");
  Eigen::VectorXd sorted = data.col(0);
  std::sort(sorted.begin(), sorted.end());
  return sorted;
}

}  // namespace corvath::algorithm
