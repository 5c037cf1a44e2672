#pragma once

#include "variant/operators/entrywise.h"

#include <string>

/// Two signals that meet in an operator or a function. Internal.
namespace corvath::math {

/// The operands of a pair on one ascending timeline. Operands that agree already are not copied;
/// they must outlive the object.
class AlignedPair {
 public:
  /// @throws CComputationException the timelines cannot be brought together
  AlignedPair(const Value& left, const Value& right);
  AlignedPair(const AlignedPair&) = delete;
  AlignedPair& operator=(const AlignedPair&) = delete;

  /// The operands on the common timeline.
  const Value& Left() const { return *left_; }
  const Value& Right() const { return *right_; }
  /// `data` on the common timeline: XYDATA if either operand is, else SIGNAL.
  Value Result(Value::Matrix& data) const;

 private:
  Value own_left_;  // in front of the pointers, which the constructor sets by filling it
  Value own_right_;
  const Value* left_;
  const Value* right_;
};

/// `f` of the pairs of data of two signals of equal channel counts. A CComputationException becomes
/// an E with `name` and ": " in front.
template <class E = CComputationException, class F>
Value CombineSignals(const Value& left, const Value& right, const std::string& name, F f) {
  try {
    const AlignedPair pair(left, right);
    Value::Matrix data = entrywise::Zip(pair.Left().GetMatrix(), pair.Right().GetMatrix(), f);
    return pair.Result(data);
  } catch (const CComputationException& e) {
    throw E(name + ": " + e.what());
  }
}

}  // namespace corvath::math
