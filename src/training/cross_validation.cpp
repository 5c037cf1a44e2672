#include "training/cross_validation.h"

#include "doe/random_draws.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <vector>

namespace corvath::training {
namespace {

/// Numbers the different rows of `points` in an arbitrary but fixed order: the number of each row.
std::vector<std::size_t> NumberDifferentRows(const Eigen::MatrixXd& points, std::size_t& count) {
  std::vector<Eigen::Index> order(static_cast<std::size_t>(points.rows()));
  std::iota(order.begin(), order.end(), Eigen::Index{0});
  const auto compare = [&](Eigen::Index a, Eigen::Index b) {
    for (Eigen::Index j = 0; j < points.cols(); ++j)
      if (points(a, j) != points(b, j)) return points(a, j) < points(b, j) ? -1 : 1;
    return 0;
  };
  std::sort(order.begin(), order.end(),
            [&](Eigen::Index a, Eigen::Index b) { return compare(a, b) < 0; });
  std::vector<std::size_t> numbers(order.size());
  count = 0;
  for (std::size_t k = 0; k < order.size(); ++k) {
    if (k == 0 || compare(order[k - 1], order[k]) != 0) ++count;
    numbers[static_cast<std::size_t>(order[k])] = count - 1;
  }
  return numbers;
}

/// An unbiased random order of 0 to n - 1 (R. Durstenfeld, "Algorithm 235: Random permutation",
/// Communications of the ACM 7, 1964, p. 420), from the engine's own numbers: the distributions of
/// the standard library differ between machines.
std::vector<std::size_t> RandomOrder(std::size_t n, std::uint32_t seed) {
  math::Engine engine(seed);
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), std::size_t{0});
  for (std::size_t k = n; k > 1; --k)
    std::swap(order[k - 1], order[(static_cast<std::uint64_t>(engine()) * k) >> 32]);
  return order;
}

}  // namespace

std::size_t CountLevels(Eigen::VectorXd column) {
  std::sort(column.begin(), column.end());
  return static_cast<std::size_t>(std::unique(column.begin(), column.end()) - column.begin());
}

ResponseData MakeResponseData(Eigen::MatrixXd points, Eigen::VectorXd values,
                              std::uint32_t num_groups, std::uint32_t seed) {
  ResponseData data;
  Eigen::MatrixXd rows(points.rows(), points.cols() + 1);
  rows << points, values;
  data.groups = MakeGroups(rows, num_groups, seed);
  data.singles = MakeGroups(rows, std::numeric_limits<std::uint32_t>::max(), seed);
  for (const auto& column : points.colwise()) data.num_levels.push_back(CountLevels(column));
  data.points = std::move(points);
  data.values = std::move(values);
  return data;
}

ResponseData RowsOf(const ResponseData& data, const std::vector<Eigen::Index>& rows) {
  ResponseData some;
  some.points = data.points(rows, Eigen::all);
  some.values = data.values(rows);
  some.groups = data.groups(rows);
  some.singles = data.singles(rows);
  for (const auto& column : some.points.colwise()) some.num_levels.push_back(CountLevels(column));
  return some;
}

std::vector<Eigen::Index> RowsWithout(Eigen::Index n, const std::vector<Eigen::Index>& some) {
  std::vector<Eigen::Index> others;
  auto next = some.begin();
  for (Eigen::Index row = 0; row < n; ++row) {
    if (next != some.end() && *next == row)
      ++next;
    else
      others.push_back(row);
  }
  return others;
}

math::metamodel::IndexVector MakeGroups(const Eigen::MatrixXd& points, std::uint32_t num_groups,
                                        std::uint32_t seed) {
  std::size_t count = 0;
  const std::vector<std::size_t> numbers = NumberDifferentRows(points, count);
  const std::vector<std::size_t> order = RandomOrder(count, seed);
  const std::size_t num = std::min<std::size_t>(num_groups, count);
  math::metamodel::IndexVector groups(points.rows());
  for (Eigen::Index i = 0; i < points.rows(); ++i)
    groups(i) = order[numbers[static_cast<std::size_t>(i)]] % num;
  return groups;
}

double Determination(const Eigen::VectorXd& values, const Eigen::VectorXd& predictions) {
  const double total = (values.array() - values.mean()).square().sum();
  return 1.0 - (values - predictions).squaredNorm() / total;
}

}  // namespace corvath::training
