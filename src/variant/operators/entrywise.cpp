#include "variant/operators/entrywise.h"

#include "variant/value/limits.h"

#include <string>

namespace corvath::math {

Value entrywise::WithData(const Value& signal, Value::Matrix& data) {
  Value result;
  result.SetKind(signal.GetKind());
  Value::Vector timeline(signal.GetVector());
  result.SetVector(timeline);
  result.SetMatrix(data);
  return result;
}

void CheckEntries(std::size_t rows, std::size_t columns) {
  if (columns > 0 && rows > kMaxEntries / columns)
    throw CDimensionException("Result of " + std::to_string(rows) + " x " +
                              std::to_string(columns) + " numbers is too large.");
}

}  // namespace corvath::math
