#include "variant/signals/peaks.h"

#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"

#include <boost/numeric/conversion/cast.hpp>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

// Peaks of vectors and signals.
namespace corvath::calculator {

namespace {

using namespace help;
namespace fn = math::functions;
using math::Value;

/// Integers of peak searches: the value plus 0.5, truncated. @throws boost::numeric's overflow
template <class Integer>
Integer RoundedUp(double value) {
  if (std::isnan(value)) throw boost::numeric::bad_numeric_cast();
  return boost::numeric_cast<Integer>(value + 0.5);
}

template <math::PeakMode kMode>
void Peaks(FunctionCall& call, Value& result) {
  const std::size_t count = call.Count();
  if (count == 0) call.Raise(L"Need at least one argument in function " + call.GetName());
  if (count > 5) call.Raise(L"Too many arguments in function " + call.GetName());
  const Value x = call.Evaluate(0);
  if (x.IsUninitialized()) call.Raise(L"Argument wrong in function " + call.GetName());
  const auto mind = count > 1 ? RoundedUp<std::int32_t>(call.Real(1)) : 1;
  const double minh = count > 2 ? call.Real(2) : -std::numeric_limits<double>::infinity();
  const double th = count > 3 ? call.Real(3) : 0.0;
  const auto num = count > 4 ? RoundedUp<std::uint64_t>(call.Real(4))
                             : std::numeric_limits<std::uint64_t>::max();
  fn::findpeaks(result, x, kMode, mind, minh, th, num);
}

}  // namespace

void AddPeakFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  table.Add(Group::kPeaks, {L"peaks"}, {Function::kAnyCount}, Peaks<math::kPeaks>);
  table.Add(Group::kPeaks, {L"minpeaks"}, {Function::kAnyCount}, Peaks<math::kMinPeaks>);
  table.Add(Group::kPeaks, {L"maxpeaks"}, {Function::kAnyCount}, Peaks<math::kMaxPeaks>);
  table.Add(Group::kPeaks, {L"magpeaks"}, {Function::kAnyCount}, Peaks<math::kMagPeaks>);
}

void AddPeakHelp(HelpTable& table) {
  const auto add = [&](const std::wstring& name, const wchar_t* text) {
    table[name] = {
        {name + L"(S [, mind [, minh[, th [, num]]]])",
         std::wstring(text) +
             L"<br>The result holds their abscissae and values, for a vector indices and values, "
             L"in the order found; it is uninitialized if there are none. The first and the last "
             L"sample are no peaks, a plateau is one at its end.",
         {{L"S", kReal, L"vector, signal, xy-data", false,
           L"The values, of a signal those of its only channel."},
          Number(L"mind",
                 L"The minimal distance (in number of samples) between two peaks (default value is "
                 L"1).",
                 true),
          Number(L"minh", L"The minimal height of the peaks (default value is -inf).", true),
          Number(L"th", L"The minimal height difference between two peaks (default value is 0).",
                 true),
          Number(L"num",
                 L"Specifies how many peaks will be returned (if all peaks shall be returned it "
                 L"should be left empty).",
                 true)}}};
  };
  add(L"peaks", L"Turning points: maxima and minima.");
  add(L"maxpeaks", L"Maxima.");
  add(L"minpeaks", L"Minima.");
  add(L"magpeaks", L"Maxima of the absolute values.");
}

}  // namespace corvath::calculator
