#include "support/values.h"
#include "variant/signals/filters.h"
#include "variant/signals/fourier.h"

namespace corvath::math {
namespace {

using namespace support;
namespace fn = functions;

/// Whether an Outcome is a signal, nothing, or a refusal that left the out-parameter alone.
bool IsSignalOrRefusal(const std::string& outcome) {
  for (const char* begin : {"SIGNAL", "XYDATA", "UNINITIALIZED", "CType: ", "CDomain: ",
                            "CDimension: ", "CComputation: ", "CFilter: ", "CVariant: "})
    if (outcome.compare(0, std::char_traits<char>::length(begin), begin) == 0) return true;
  return false;
}

TEST(OddSignals, AreAnsweredOrRefused) {
  // No crash, no endless loop, and nothing thrown but the numeric side's own exceptions.
  const double huge = 1e308, tiny = 5e-324;
  const std::vector<Value> signals = {XY({0, 1}, {1, NAN}),
                                      XY({1, 1, 1}, {1, 2, 3}),
                                      XY({0, 0, 1}, {1, 2, 3}),
                                      XY({0, 2, 1, 3}, {1, 2, 3, 4}),
                                      XY({0, 1, 0}, {1, 2, 3}),
                                      XY({-huge, 0, huge}, {huge, -huge, huge}),
                                      XY({0, tiny, 10 * tiny}, {1, 2, 3}),
                                      XY({0, NAN, 2}, {1, 2, 3}),
                                      XY({0, 1, INFINITY}, {1, 2, 3}),
                                      XY({-INFINITY, 1, INFINITY}, {1, 2, 3}),
                                      XY({3, 2, 0}, {INFINITY, 2, NAN}),
                                      Value::Signal(RawVector({0, 1, 2}), Value::Matrix(0, 3)),
                                      Value::Signal(RawVector({0, 1, 3}), Value::Matrix(0, 3)),
                                      Value()};
  using One = void (*)(Value&, const Value&);
  const std::function<void(Value&, const Value&)> functions[] = {
      [](Value& r, const Value& s) {
        fn::butterworthFilter(r, s, Scalar(0.1), 4096, 0, 1, 0, 0, 1, 1, true);
      },
      [](Value& r, const Value& s) {
        fn::chebyOneFilter(r, s, Vec({0.1, 0.2}), 1e300, 3, 3, 0, 0, 0, 1, 1, true);
      },
      [](Value& r, const Value& s) {
        fn::chebyTwoFilter(r, s, Scalar(0.1), 1e-300, 2, 1, 2, 0, 0, 1, 1, true);
      },
      [](Value& r, const Value& s) { fn::saeFilter(r, s, Scalar(0.1), 3, 0, 0, 1, 1, true); },
      [](Value& r, const Value& s) {
        fn::decimateFilter(r, s, 2147483647, 2147483647, 1, NAN, INFINITY);
      },
      [](Value& r, const Value& s) { fn::smoothFilter(r, s, 1); },
      [](Value& r, const Value& s) { fn::fft(r, s, 0, NAN, 0); },
      [](Value& r, const Value& s) { fn::ifft(r, s, 2147483647, 0, 0); },
      One(fn::fft),
      One(fn::ifft),
      One(fn::fftshift),
      One(fn::ifftshift),
  };
  for (const auto& f : functions)
    for (const Value& signal : signals) {
      const std::string outcome = Outcome([&](Value& r) { f(r, signal); });
      EXPECT_TRUE(IsSignalOrRefusal(outcome)) << &f - functions << ": " << outcome;
    }
}

}  // namespace
}  // namespace corvath::math
