#pragma once

#include "foundation/math_exception.h"
#include "foundation/text.h"
#include "support/testing.h"
#include "variant/value/variant.h"

#include <boost/core/demangle.hpp>

#include <complex>

/// Short builders of values of the numeric side.
namespace support {

using Value = corvath::math::Value;
using Complex = Value::Complex;

inline Value Scalar(double re, double im = 0.0) {
  return Value(re, im);
}

inline Value::Vector RawVector(const std::vector<Complex>& entries) {
  Value::Vector vector(entries.size());
  std::copy(entries.begin(), entries.end(), vector.begin());
  return vector;
}

inline Value::Matrix RawMatrix(const std::vector<std::vector<Complex>>& rows) {
  Value::Matrix matrix(rows.size(), rows.empty() ? 0 : rows.front().size());
  for (std::size_t i = 0; i < rows.size(); ++i)
    for (std::size_t j = 0; j < rows[i].size(); ++j) matrix(i, j) = rows[i][j];
  return matrix;
}

inline Value Vec(const std::vector<Complex>& entries) {
  return Value(RawVector(entries));
}

inline Value Mat(const std::vector<std::vector<Complex>>& rows) {
  return Value(RawMatrix(rows));
}

inline Value Sig(const std::vector<Complex>& timeline,
                 const std::vector<std::vector<Complex>>& channels) {
  return Value::Signal(RawVector(timeline), RawMatrix(channels));
}

inline Value XY(const std::vector<Complex>& x, const std::vector<Complex>& y) {
  return Value::XYData(RawVector(x), RawVector(y));
}

/// The readable form, for messages and for comparing values that hold NaN.
inline std::string Text(const Value& value) {
  std::wostringstream stream;
  stream << value;
  return corvath::utils::ToUtf8(stream.str());
}

/// The readable form of what `compute(result)` leaves in its out-parameter, or "CType: text" of the
/// exception of the numeric side that it throws, so that a table can hold both. A failure must leave
/// the out-parameter alone.
template <class Compute>
std::string Outcome(Compute&& compute) {
  using namespace corvath::math;
  Value result = Vec({-77, 77});
  try {
    compute(result);
    return Text(result);
  } catch (const CVariantException& error) {
    // "corvath::math::CTypeException"
    std::string type = boost::core::demangle(typeid(error).name());
    type = type.substr(type.rfind(':') + 1);
    const bool is_changed = result != Vec({-77, 77});
    return (is_changed ? "<result changed> " : "") + type.substr(0, type.find("Exception")) + ": " +
           error.what();
  }
}

/// `f` with its outcome as the result.
template <class... Arguments>
auto OutcomeOf(void (*f)(Value&, Arguments...)) {
  return [f](Arguments... arguments) { return Outcome([&](Value& r) { f(r, arguments...); }); };
}
inline std::string Out(void (*f)(Value&, const Value&), const Value& x) {
  return OutcomeOf(f)(x);
}
inline std::string Out(void (*f)(Value&, const Value&, const Value&), const Value& x,
                       const Value& y) {
  return OutcomeOf(f)(x, y);
}

/// That an Outcome begins so: the type of a refusal, and enough of its text to know it by.
#define EXPECT_BEGINS(outcome, beginning) \
  EXPECT_EQ((outcome).substr(0, sizeof(beginning) - 1), beginning)

}  // namespace support

namespace corvath::math {
/// How GoogleTest shows a value.
inline void PrintTo(const Value& value, std::ostream* stream) {
  *stream << support::Text(value);
}
}  // namespace corvath::math
