#include "analysis/optimisation/pareto_front.h"

#include "foundation/constants.h"
#include "foundation/parallel.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>

namespace corvath::analysis {
namespace {

using math::kInfinity;
/// Searches that run at once, whatever the number of threads.
constexpr std::size_t kPlacesAtOnce = 4;

/// The front as far as it is known.
class FrontSearch {
 public:
  FrontSearch(const NonlinearProgram& program, const Screening& screening,
              const FrontSettings& settings)
      : program_(program), screening_(screening), settings_(settings) {
    for (Eigen::Index k = 0; k < screening.points.rows(); ++k)
      Keep({screening.points.row(k), screening.values.row(k)});
  }

  ParetoFront Run() {
    if (FindEnds()) {
      if (program_.NumObjectives() == 2)
        HalveGaps();
      else
        SearchLattice();
      front_.points.clear();
      Collect();
    }
    return std::move(front_);
  }

 private:
  struct Known {
    Evaluated point;
    Eigen::RowVectorXd objectives;
    double breach;
  };

  /// A point of the plane, in shares of the ranges, and where searches towards it begin.
  struct Place {
    Eigen::RowVectorXd at;
    std::vector<Evaluated> starts;
  };

  void Keep(const Evaluated& point) {
    if (!point.IsFinite()) return;
    pool_.push_back({point, program_.Objectives(point.columns).transpose(),
                     LargestBreach(program_, screening_.scales, point.columns).relative});
  }

  /// The best points by each objective alone, and the ranges between them. False if no point keeps
  /// the limits.
  bool FindEnds() {
    const Eigen::Index count = program_.NumObjectives();
    Eigen::MatrixXd ends(count, count);
    std::vector<Evaluated> points;
    for (Eigen::Index i = 0; i < count; ++i) {
      SearchSettings search = settings_.search;
      search.progress = [&](double share) {
        Tell(0.4 * (static_cast<double>(i) + share) / static_cast<double>(count));
      };
      const GlobalOptimum found = SearchGlobally(
          program_, ObjectiveForm(program_, screening_.scales, i), screening_, search);
      front_.num_searches += found.num_searches;
      if (i == 0 || IsBetter(found.best, front_.nearest)) front_.nearest = found.best;
      if (!found.best.IsFeasible()) return false;
      points.push_back(found.best.point);
      ends.row(i) = program_.Objectives(found.best.point.columns).transpose();
    }
    ideal_ = ends.diagonal().transpose();
    ranges_ = ends.colwise().maxCoeff() - ideal_;
    for (double& range : ranges_)
      if (!(range > 0.0)) range = 1.0;  // this objective is at its best with the others
    // Each end as good in the other objectives as the first one lets it be, in each order of them: the
    // second search begins where the first one came, and gives of the first objective what rounding
    // does.
    constexpr double kFirst[] = {1e-4, 1e-8}, kSecond = 1e-2;
    for (Eigen::Index i = 0; i < count; ++i) {
      for (Eigen::Index second = 0; second < count; ++second) {
        if (second == i) continue;
        Evaluated end = points[static_cast<std::size_t>(i)];
        for (const double first : kFirst) {
          Eigen::VectorXd direction = ranges_.transpose();
          direction(i) *= first;
          if (count > 2) direction(second) *= kSecond;
          Evaluated better = Search(ideal_.transpose(), direction, {end});
          ++front_.num_searches;
          if (!better.IsFinite()) break;
          Accept(better);
          end = std::move(better);
        }
      }
      Accept(points[static_cast<std::size_t>(i)]);
    }
    // Ends that were not as good as they might be make the ranges too wide.
    const auto front = Front();
    for (Eigen::Index i = 0; i < count; ++i) {
      double largest = ideal_(i);
      for (const std::size_t k : front) largest = std::max(largest, found_[k].objectives(i));
      if (largest > ideal_(i)) ranges_(i) = largest - ideal_(i);
    }
    return true;
  }

  void Tell(double share) const {
    if (settings_.search.progress) settings_.search.progress(share);
  }

  Evaluated Search(const Eigen::VectorXd& reference, const Eigen::VectorXd& direction,
                   const std::vector<Evaluated>& starts) const {
    const SqpForm form = ReferenceForm(program_, screening_.scales, reference, direction);
    LocalOptimum best;
    best.breach.relative = kInfinity;
    for (const Evaluated& start : starts) {
      LocalOptimum found = SearchMixed(program_, form, screening_.scales, start);
      if (IsBetter(found, best)) best = std::move(found);
    }
    return best.IsFeasible() ? best.point : Evaluated();
  }

  /// The `count` points from which a search towards the place looks most promising.
  std::vector<Evaluated> BestOf(const std::vector<Known>& points, const Eigen::RowVectorXd& place,
                                std::size_t count) const {
    constexpr double kBreachWeight = 10.0;
    std::vector<std::pair<double, std::size_t>> order;
    for (std::size_t k = 0; k < points.size(); ++k)
      order.emplace_back((Shares(points[k]) - place).maxCoeff() + kBreachWeight * points[k].breach,
                         k);
    count = std::min(count, order.size());
    std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count),
                      order.end());
    std::vector<Evaluated> best;
    for (std::size_t k = 0; k < count; ++k) best.push_back(points[order[k].second].point);
    return best;
  }

  Place PlaceAt(const Eigen::RowVectorXd& at) const {
    Place place{at, BestOf(found_, at, 2)};
    for (Evaluated& start : BestOf(pool_, at, 2)) place.starts.push_back(std::move(start));
    return place;
  }

  /// Searches towards the places. @return  what came of each; empty where no point keeps the limits
  std::vector<Evaluated> SearchPlaces(const std::vector<Place>& places) {
    std::vector<Evaluated> results(places.size());
    utils::ParallelTasks(places.size(), [&](std::size_t k) {
      const Eigen::VectorXd reference =
          (ideal_.array() + places[k].at.array() * ranges_.array()).transpose();
      results[k] = Search(reference, ranges_.transpose(), places[k].starts);
    });
    front_.num_searches += static_cast<Eigen::Index>(places.size());
    return results;
  }

  void Add(const Evaluated& point) {
    if (point.IsFinite()) Accept(point);
  }
  void Accept(const Evaluated& point) {
    found_.push_back({point, program_.Objectives(point.columns).transpose(), 0.0});
  }

  Eigen::RowVectorXd Shares(const Known& known) const {
    return (known.objectives - ideal_).array() / ranges_.array();
  }

  /// Positions of the found points that none dominates, by the first objective. Points closer than
  /// rounding lets tell apart count once.
  std::vector<std::size_t> Front() const {
    constexpr double kSame = 1e-7;
    Eigen::MatrixXd objectives(static_cast<Eigen::Index>(found_.size()), program_.NumObjectives());
    for (std::size_t k = 0; k < found_.size(); ++k)
      objectives.row(static_cast<Eigen::Index>(k)) = Shares(found_[k]);
    // In steps of the rounding, so that a point which is worse by rounding alone is no second one.
    const Eigen::MatrixXd steps = (objectives / kSame).array().round();
    std::vector<std::size_t> front;
    for (const Eigen::Index row : NonDominated(steps))
      front.push_back(static_cast<std::size_t>(row));
    std::stable_sort(front.begin(), front.end(), [&](std::size_t a, std::size_t b) {
      return found_[a].objectives(0) < found_[b].objectives(0);
    });
    return front;
  }

  void HalveGaps() {
    const auto wanted =
        static_cast<std::size_t>(settings_.num_points > 0 ? settings_.num_points : 101);
    constexpr std::size_t kFirst = 9;  // places between the ends to begin with
    std::vector<Place> places;
    const std::size_t first = std::min(kFirst, wanted > 2 ? wanted - 2 : 0);
    for (std::size_t k = 1; k <= first; ++k) {
      const double share = static_cast<double>(k) / static_cast<double>(first + 1);
      places.push_back(PlaceAt(Eigen::RowVector2d(share, 1.0 - share)));
    }
    for (const Evaluated& result : SearchPlaces(places)) Add(result);
    // Points of a front as long as two sides of a square, if they were even, have ten times this
    // between them.
    const double least_distance = 0.2 / static_cast<double>(wanted);
    // How often searches failed to fill a gap, by the first objectives of both sides. From the middle
    // a search may jump over a part of the front to a better end of another; a place close to one side
    // keeps it there. Those from the sample have the last word.
    constexpr int kMaxFailures = 4;
    std::map<std::pair<double, double>, int> failures;
    const auto failed = [&](std::size_t left, std::size_t right) -> int& {
      return failures[{found_[left].objectives(0), found_[right].objectives(0)}];
    };
    for (;;) {
      const std::vector<std::size_t> front = Front();
      Tell(0.4 + 0.6 * static_cast<double>(front.size()) / static_cast<double>(wanted));
      if (front.size() >= wanted) break;
      struct Gap {
        double width;
        std::size_t left, right;
      };
      std::vector<Gap> gaps;
      for (std::size_t k = 0; k + 1 < front.size(); ++k)
        if (failed(front[k], front[k + 1]) < kMaxFailures)
          gaps.push_back({(Shares(found_[front[k]]) - Shares(found_[front[k + 1]])).norm(),
                          front[k], front[k + 1]});
      if (gaps.empty()) break;
      std::stable_sort(gaps.begin(), gaps.end(),
                       [](const Gap& a, const Gap& b) { return a.width > b.width; });
      gaps.resize(std::min({gaps.size(), kPlacesAtOnce, wanted - front.size()}));
      places.clear();
      for (const Gap& gap : gaps) {
        const Known &left = found_[gap.left], &right = found_[gap.right];
        const auto between = [&](double share) -> Eigen::RowVectorXd {
          const Eigen::RowVectorXd at = (1.0 - share) * Shares(left) + share * Shares(right);
          return at.array() + 0.5 * (1.0 - at.sum());  // onto the plane
        };
        switch (failed(gap.left, gap.right)) {
          case 0:
            places.push_back({between(0.5), {left.point, right.point}});
            break;
          case 1:
            places.push_back({between(0.75), {right.point}});
            break;
          case 2:
            places.push_back({between(0.25), {left.point}});
            break;
          default:
            places.push_back({between(0.5), BestOf(pool_, between(0.5), 2)});
        }
      }
      const std::vector<Evaluated> results = SearchPlaces(places);
      for (std::size_t k = 0; k < gaps.size(); ++k) {
        // Where the front itself has a gap, a search leads to the very end of a part: close to a
        // known point perhaps, but not to a point as good as known.
        const Gap& gap = gaps[k];
        bool fills = false;
        if (results[k].IsFinite()) {
          const Eigen::RowVectorXd at =
              (program_.Objectives(results[k].columns).transpose() - ideal_).array() /
              ranges_.array();
          fills = std::min((at - Shares(found_[gap.left])).norm(),
                           (at - Shares(found_[gap.right])).norm()) >
                  std::min(0.1 * gap.width, least_distance);
        }
        ++failed(gap.left, gap.right);  // counts only while they stay neighbours
        if (fills) Accept(results[k]);
      }
    }
  }

  /// A triangular lattice over the shadow of the unit cube on the plane, a hexagon.
  void SearchLattice() {
    const Eigen::Index wanted = settings_.num_points > 0 ? settings_.num_points : 100;
    // The hexagon has about 3 h^2 points, of which a half leads to points of their own.
    const auto h = static_cast<Eigen::Index>(
        std::max(3.0, std::ceil(std::sqrt(2.0 * static_cast<double>(wanted) / 3.0))));
    std::vector<Eigen::RowVectorXd> places;
    const Eigen::Index third = (h + 2) / 3;
    for (Eigen::Index a = -third; a <= h; ++a)
      for (Eigen::Index b = -third; b <= h; ++b) {
        const Eigen::Index c = h - a - b;
        if (c < -third || std::max({a, b, c}) - std::min({a, b, c}) > h) continue;
        places.push_back(Eigen::RowVector3d(static_cast<double>(a), static_cast<double>(b),
                                            static_cast<double>(c)) /
                         static_cast<double>(h));
      }
    for (std::size_t first = 0; first < places.size(); first += kPlacesAtOnce) {
      Tell(0.4 + 0.6 * static_cast<double>(first) / static_cast<double>(places.size()));
      std::vector<Place> batch;
      for (std::size_t k = first; k < std::min(first + kPlacesAtOnce, places.size()); ++k)
        batch.push_back(PlaceAt(places[k]));
      for (const Evaluated& result : SearchPlaces(batch)) Add(result);
    }
  }

  void Collect() {
    const std::vector<std::size_t> front = Front();
    front_.objectives.resize(static_cast<Eigen::Index>(front.size()), program_.NumObjectives());
    for (std::size_t k = 0; k < front.size(); ++k) {
      front_.points.push_back(found_[front[k]].point);
      front_.objectives.row(static_cast<Eigen::Index>(k)) = found_[front[k]].objectives;
    }
  }

  const NonlinearProgram& program_;
  const Screening& screening_;
  const FrontSettings& settings_;
  std::vector<Known> pool_;   ///< of the sample
  std::vector<Known> found_;  ///< by searches; all keep the limits
  Eigen::RowVectorXd ideal_, ranges_;
  ParetoFront front_;
};

}  // namespace

ParetoFront FindFront(const NonlinearProgram& program, const Screening& screening,
                      const FrontSettings& settings) {
  if (program.NumObjectives() < 2 || program.NumObjectives() > 3)
    throw std::logic_error("FindFront: a front has two or three objectives.");
  return FrontSearch(program, screening, settings).Run();
}

std::vector<Eigen::Index> NonDominated(const Eigen::MatrixXd& objectives) {
  std::vector<Eigen::Index> rows;
  for (Eigen::Index k = 0; k < objectives.rows(); ++k) {
    bool is_dominated = false;
    for (Eigen::Index other = 0; other < objectives.rows() && !is_dominated; ++other) {
      if (other == k || !(objectives.row(other).array() <= objectives.row(k).array()).all())
        continue;
      is_dominated = other < k || objectives.row(other) != objectives.row(k);
    }
    if (!is_dominated) rows.push_back(k);
  }
  return rows;
}

}  // namespace corvath::analysis
