#include "variant/signals/signal_pair.h"

#include "variant/functions/interpolation.h"
#include "variant/signals/timeline.h"

namespace corvath::math {

namespace {

/// Makes `own` the ascending form of a descending `operand`, and returns what to use.
const Value* AscendingForm(const Value& operand, Value& own) {
  if (!operand.IsFlipped()) return &operand;
  own = Flip(operand);
  return &own;
}

}  // namespace

AlignedPair::AlignedPair(const Value& left, const Value& right)
    : left_(AscendingForm(left, own_left_)), right_(AscendingForm(right, own_right_)) {
  if (SameTimeline(*left_, *right_)) return;
  if (left_ != &own_left_) own_left_ = left;
  if (right_ != &own_right_) own_right_ = right;
  left_ = &own_left_;
  right_ = &own_right_;
  try {
    EqualizeTimelines(own_left_, own_right_, kLinear, 0.0, 0.0);
  } catch (const std::exception& e) {
    throw CComputationException(
        std::string("Computational error during equalization of timelines: ") + e.what());
  }
}

Value AlignedPair::Result(Value::Matrix& data) const {
  Value result = entrywise::WithData(*left_, data);
  result.SetKind(left_->IsXYData() || right_->IsXYData() ? Value::XYDATA : Value::SIGNAL);
  return result;
}

}  // namespace corvath::math
