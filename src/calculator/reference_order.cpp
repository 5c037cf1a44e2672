#include "calculator/reference_order.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace corvath::calculator {

namespace {

using Numbers = std::vector<std::size_t>;

/// Most cycles that are opened; each costs at most a pass over all references.
constexpr int kMaxOpenedCycles = 100;

/// The strongly connected components of parts of one graph.
class Components {
 public:
  explicit Components(const std::vector<Numbers>& references)
      : references_(references), states_(references.size()) {}

  /// Those of the graph that `part` and the references within it make, each ascending, and behind
  /// those that it refers to.
  std::vector<Numbers> Find(const Numbers& part) {
    components_.clear();
    for (const std::size_t number : part) states_[number] = State{State::kNew};
    for (const std::size_t number : part)
      if (states_[number].phase == State::kNew) Search(number);
    for (const std::size_t number : part) states_[number].phase = State::kOutside;
    return std::move(components_);
  }

 private:
  struct State {
    enum Phase { kOutside, kNew, kOpen, kDone };
    Phase phase = kOutside;
    std::size_t next = 0;    ///< reference to follow next
    std::size_t index = 0;   ///< place in the search
    std::size_t lowest = 0;  ///< least place of an open number that it reaches
  };

  void Open(std::size_t number) {
    State& state = states_[number];
    state.phase = State::kOpen;
    state.index = state.lowest = count_++;
    open_.push_back(number);
    path_.push_back(number);
  }

  void Search(std::size_t root) {
    Open(root);
    while (!path_.empty()) {
      const std::size_t number = path_.back();
      State& state = states_[number];
      if (state.next < references_[number].size()) {
        const std::size_t other = references_[number][state.next++];
        if (states_[other].phase == State::kNew)
          Open(other);
        else if (states_[other].phase == State::kOpen)
          state.lowest = std::min(state.lowest, states_[other].index);
        continue;
      }
      path_.pop_back();
      if (!path_.empty()) {
        std::size_t& lowest = states_[path_.back()].lowest;
        lowest = std::min(lowest, state.lowest);
      }
      if (state.lowest == state.index) Close(number);
    }
  }

  /// What has been opened since `first` is one component.
  void Close(std::size_t first) {
    const auto begin = std::find(open_.rbegin(), open_.rend(), first).base() - 1;
    components_.emplace_back(begin, open_.end());
    open_.erase(begin, open_.end());
    for (const std::size_t number : components_.back()) states_[number].phase = State::kDone;
    std::sort(components_.back().begin(), components_.back().end());
  }

  const std::vector<Numbers>& references_;
  std::vector<State> states_;
  std::vector<Numbers> components_;
  Numbers open_;  ///< of no component yet
  Numbers path_;
  std::size_t count_ = 0;
};

}  // namespace

Numbers OrderByReferences(const std::vector<Numbers>& references) {
  Components components(references);
  Numbers order;
  Numbers all(references.size());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
  std::vector<Numbers> open = components.Find(all);  // components, the next one at the end
  std::reverse(open.begin(), open.end());
  for (int opened = 0; !open.empty();) {
    const Numbers component = std::move(open.back());
    open.pop_back();
    if (component.size() == 1 || ++opened > kMaxOpenedCycles) {
      order.insert(order.end(), component.begin(), component.end());
      continue;
    }
    order.push_back(component.front());
    std::vector<Numbers> rest = components.Find({component.begin() + 1, component.end()});
    open.insert(open.end(), std::make_move_iterator(rest.rbegin()),
                std::make_move_iterator(rest.rend()));
  }
  return order;
}

}  // namespace corvath::calculator
