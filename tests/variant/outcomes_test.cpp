#include "support/files.h"
#include "support/read_value.h"
#include "variant/functions/calculus.h"
#include "variant/functions/interpolation.h"
#include "variant/functions/linear_algebra.h"
#include "variant/functions/ordering.h"
#include "variant/functions/reductions.h"
#include "variant/operators/arithmetic.h"
#include "variant/operators/binary_functions.h"
#include "variant/operators/elementwise.h"
#include "variant/operators/power_mean.h"
#include "variant/signals/filter_cascade.h"
#include "variant/signals/filters.h"
#include "variant/signals/fourier.h"
#include "variant/signals/modal.h"
#include "variant/signals/peaks.h"
#include "variant/signals/timeline.h"
#include "variant/value/complex_parts.h"
#include "variant/value/constructors.h"
#include "variant/value/random_values.h"

namespace corvath::math {
namespace {

namespace fn = functions;

using Arguments = std::vector<Value>;
using Function = std::function<void(Value& result, const Arguments&)>;

/// An argument as a function takes it; a number too large for an integer is the largest.
template <class T>
T As(const Value& argument) {
  if constexpr (std::is_same_v<T, Value>) {
    return argument;
  } else if constexpr (std::is_same_v<T, Value::Vector>) {
    return argument.GetVector();
  } else {
    const double number = argument.GetScalar().real();
    constexpr T kMost = std::numeric_limits<T>::max();
    return number >= static_cast<double>(kMost) ? kMost : static_cast<T>(number);
  }
}

template <class... T, std::size_t... I>
void CallWith(void (*f)(Value&, T...), Value& result, const Arguments& a,
              std::index_sequence<I...>) {
  f(result, As<std::decay_t<T>>(a.at(I))...);
}

using Functions = std::map<std::pair<std::string, std::size_t>, Function>;
constexpr std::size_t kAnyCount = 99;

template <class... T>
void Register(Functions& functions, const std::string& name, void (*f)(Value&, T...)) {
  functions[{name, sizeof...(T)}] = [f](Value& result, const Arguments& a) {
    CallWith(f, result, a, std::index_sequence_for<T...>());
  };
}

/// By name and number of arguments.
Functions GetFunctions() {
  using V = const Value&;
  using Unary = void (*)(Value&, V);
  using Binary = void (*)(Value&, V, V);
  Functions all;
  const std::pair<const char*, Unary> unary[] = {
      {"area", fn::area},         {"atan2", fn::atan2},
      {"cart2pol", fn::cart2pol}, {"euklidnorm", fn::euklidnorm},
      {"fft", fn::fft},           {"fft2d", fn::fft2d},
      {"fftshift", fn::fftshift}, {"ifft", fn::ifft},
      {"ifft2d", fn::ifft2d},     {"ifftshift", fn::ifftshift},
      {"invert", fn::invert},     {"lufactorize", fn::lufactorize},
      {"max", fn::max},           {"mean", fn::mean},
      {"min", fn::min},           {"not", Not},
      {"pol2cart", fn::pol2cart}, {"sgn", fn::sgn},
      {"sort", fn::sort},         {"stddev", fn::stddev},
      {"sum", fn::sum},           {"transpose", fn::transpose},
      {"xydata", fn::xydata}};
  for (const auto& [name, f] : unary) Register(all, name, f);
  const std::pair<const char*, Binary> binary[] = {{"*", Multiply},
                                                   {"+", Add},
                                                   {"-", Subtract},
                                                   {"/", Divide},
                                                   {"and", And},
                                                   {"atan2", fn::atan2},
                                                   {"comac", fn::comac},
                                                   {"cplx", fn::cplx},
                                                   {"extract", fn::extract},
                                                   {"innerprod", fn::innerprod},
                                                   {"lct", fn::lct},
                                                   {"mac", fn::mac},
                                                   {"matrixmult", fn::matrixmult},
                                                   {"mod", fn::mod},
                                                   {"or", Or},
                                                   {"outerprod", fn::outerprod},
                                                   {"pow", fn::pow},
                                                   {"rmsdev", fn::rmsdev},
                                                   {"sdi", fn::sdi},
                                                   {"times", fn::times},
                                                   {"xydata", fn::xydata}};
  for (const auto& [name, f] : binary) Register(all, name, f);
  const std::pair<const char*, Unary> predicates[] = {
      {"is_complex", [](Value& r, V x) { r = Value(x.IsComplex()); }},
      {"is_equidistant", [](Value& r, V x) { r = Value(IsEquidistant(x)); }},
      {"is_flipped", [](Value& r, V x) { r = Value(x.IsFlipped()); }},
      {"is_ordered", [](Value& r, V x) { r = Value(x.IsOrdered()); }},
      {"is_zero", [](Value& r, V x) { r = Value(IsZero(x)); }},
      {"smallest_step", [](Value& r, V x) { r = Value(SmallestStep(x)); }},
  };
  for (const auto& [name, f] : predicates) Register(all, name, f);
  const std::pair<const char*, Binary> accesses[] = {
      {"<", [](Value& r, V a, V b) { r = Value(Less(a, b)); }},
      {"<=", [](Value& r, V a, V b) { r = Value(LessEqual(a, b)); }},
      {">", [](Value& r, V a, V b) { r = Value(Greater(a, b)); }},
      {">=", [](Value& r, V a, V b) { r = Value(GreaterEqual(a, b)); }},
      {"at", [](Value& r, V x, V i) { r = x[i]; }},
      {"column", [](Value& r, V x, V j) { r = x.GetColumn(j); }},
      {"equals", [](Value& r, V a, V b) { r = Value(a == b); }},
      {"is_close", [](Value& r, V a, V b) { r = Value(IsClose(a, b)); }},
      {"row", [](Value& r, V x, V i) { r = x.GetRow(i); }},
  };
  for (const auto& [name, f] : accesses) Register(all, name, f);
  Register(all, "filter", fn::filter);
  Register(all, "powmean", fn::powmean);
  Register(all, "powmeandev", fn::powmeandev);
  Register(all, "round", fn::round);
  Register<V, int>(all, "derive", fn::derive);
  Register<V, int>(all, "integrate", fn::integrate);
  Register<V, double, double>(all, "area", fn::area);
  Register(all, "findpeaks", fn::findpeaks);
  Register(all, "linspace", fn::linspace);
  Register(all, "modepairs", fn::modepairs);
  Register<V, std::uint64_t>(all, "norm", fn::norm);
  Register(all, "smoothFilter", fn::smoothFilter);
  Register(all, "window", fn::window);
  Register(
      all, "interpolate", +[](Value& r, V x, const Value::Vector& axis, int degree) {
        Interpolate(r, x, axis, degree, 0, 0);
      });
  Register(
      all, "interpolate_by_step",
      +[](Value& r, V x, double step, int degree) { InterpolateByStep(r, x, step, degree, 0, 0); });
  Register(
      all, "mapping", +[](Value& r, V a, V b) { fn::mapping(r, a, b, kLinear, 0, 0); });
  Register(
      all, "butterworth", +[](Value& r, V x, V cutoff, int order, int type, int start) {
        fn::butterworthFilter(r, x, cutoff, order, type, 1, 0, 0, start, start, false);
      });
  Register(
      all, "bessel", +[](Value& r, V x, int order) {
        fn::besselFilter(r, x, Value(0.1), order, 0, 1, 0, 0, 0, 0, false);
      });
  Register(
      all, "chebyshev1", +[](Value& r, V x, double ripple) {
        fn::chebyOneFilter(r, x, Value(0.1), ripple, 2, 0, 1, 0, 0, 0, 0, false);
      });
  Register(
      all, "chebyshev2", +[](Value& r, V x, double ripple) {
        fn::chebyTwoFilter(r, x, Value(0.1), ripple, 2, 0, 1, 0, 0, 0, 0, false);
      });
  Register(
      all, "fft", +[](Value& r, V x, int degree) { fn::fft(r, x, degree, 0, 0); });
  Register(
      all, "ifft", +[](Value& r, V x, int degree) { fn::ifft(r, x, degree, 0, 0); });
  Register(
      all, "sae", +[](Value& r, V x, V cutoff, int start) {
        fn::saeFilter(r, x, cutoff, 1, 0, 0, 0, start, true);
      });
  Register(
      all, "decimate", +[](Value& r, V x, int factor, int ratio) {
        fn::decimateFilter(r, x, factor, ratio, 1, 0, 0);
      });
  Register(
      all, "rand", +[](Value& r, V x, int distribution, V parameters) {
        boost::random::mt19937 generator;
        fn::rand(r, x, distribution, parameters, generator);
      });
  Register(
      all, "at", +[](Value& r, V x, V i, V j) { r = x(i, j); });
  Register(
      all, "is_close",
      +[](Value& r, V a, V b, double tolerance) { r = Value(IsClose(a, b, tolerance)); });
  Register(
      all, "add_channels", +[](Value& r, V x, V channels) {
        Value sum = x;
        sum.addChannels(channels);
        r = sum;
      });
  all[{"max_of", kAnyCount}] = [](Value& r, const Arguments& a) { fn::max(r, a); };
  all[{"signal", kAnyCount}] = [](Value& r, const Arguments& a) { fn::signal(r, a); };
  return all;
}

/// `got` as far as `expected` says it.
void ExpectOutcome(std::string got, std::string expected) {
  if (expected.find(": ") == std::string::npos) {
    expected = support::Text(support::ReadValue(expected));
  } else if (expected.size() > 3 && expected.substr(expected.size() - 3) == "...") {
    expected.resize(expected.size() - 3);
    got.resize(std::min(got.size(), expected.size()));
  }
  EXPECT_EQ(got, expected);
}

TEST(Outcomes, AreThoseOfTheFile) {
  const Functions functions = GetFunctions();
  std::istringstream file(support::ReadFile(TEST_OUTCOMES));
  int line_number = 0, num_cases = 0;
  for (std::string line; std::getline(file, line);) {
    SCOPED_TRACE(std::string(TEST_OUTCOMES) + ":" + std::to_string(++line_number) + ": " + line);
    if (line.empty() || line.substr(0, 2) == "//") continue;
    ++num_cases;
    std::istringstream words(line);
    std::string name, word, outcome;
    Arguments arguments;
    for (words >> name; words >> word && word != "=>";)
      arguments.push_back(support::ReadValue(word));
    std::getline(words >> std::ws, outcome);
    auto function = functions.find({name, arguments.size()});
    if (function == functions.end()) function = functions.find({name, kAnyCount});
    ASSERT_NE(function, functions.end());
    ExpectOutcome(support::Outcome([&](Value& r) { function->second(r, arguments); }), outcome);
  }
  EXPECT_GT(num_cases, 500);
}

}  // namespace
}  // namespace corvath::math
