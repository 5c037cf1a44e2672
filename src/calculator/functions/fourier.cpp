#include "variant/signals/fourier.h"

#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"

#include <string>

// Fourier transforms. The signal is evaluated into the result and worked on there.
namespace corvath::calculator {

namespace {

using namespace help;
namespace fn = math::functions;
using math::Value;

template <void (*kTransform)(Value&, const Value&),
          void (*kResampling)(Value&, const Value&, int, double, double)>
void Transform(FunctionCall& call, Value& result) {
  call.Evaluate(0, result);
  if (call.Count() == 1) return kTransform(result, result);
  const int interpolation = call.Integer(1);
  const double d0 = call.Real(2);
  kResampling(result, result, interpolation, d0, call.Real(3));
}

template <void (*kTransform)(Value&, const Value&)>
void InPlace(FunctionCall& call, Value& result) {
  call.Evaluate(0, result);
  kTransform(result, result);
}

}  // namespace

void AddFourierFunctions(FunctionTable& table) {
  table.Add(FunctionGroup::kFourier, {L"fft"}, {1, 4}, Transform<fn::fft, fn::fft>);
  table.Add(FunctionGroup::kFourier, {L"ifft"}, {1, 4}, Transform<fn::ifft, fn::ifft>);
  table.Add(FunctionGroup::kFourier, {L"fftshift"}, {1}, InPlace<fn::fftshift>);
  table.Add(FunctionGroup::kFourier, {L"ifftshift"}, {1}, InPlace<fn::ifftshift>);
  table.Add(FunctionGroup::kFourier, {L"fft2d"}, {1}, InPlace<fn::fft2d>);
  table.Add(FunctionGroup::kFourier, {L"ifft2d"}, {1}, InPlace<fn::ifft2d>);
}

void AddFourierHelp(HelpTable& table) {
  const auto with_resampling = [&](const std::wstring& name, const wchar_t* text) {
    const ArgumentHelp signal = S(L"The signal.", kNumbers);
    table[name] = {{name + L"(S)", text, {signal}},
                   {name + L"(S, interpolation, d0, d1)",
                    L"The same of a signal that need not be equidistant. It is resampled first, to "
                    L"its smallest step.",
                    {S(L"The signal."), Interpolation(), FirstSlope(), LastSlope()}}};
  };
  with_resampling(
      L"fft",
      L"Fourier transform of each channel, unscaled. S must be equidistant; any number n of "
      L"samples "
      L"will do.<br>The abscissa is the angular frequency 2 pi k/(t<sub>1</sub> - t<sub>0</sub>), "
      L"k "
      L"= 0 to n - 1, with t<sub>0</sub> and t<sub>1</sub> the ends of S. A signal that begins at "
      L"t<sub>0</sub> has the factor exp(i w t<sub>0</sub>) at w.");
  with_resampling(
      L"ifft",
      L"Inverse Fourier transform of each channel: undoes fft. S is the spectrum of a signal that "
      L"begins at 0.<br>The abscissa is 2 pi k/w<sub>1</sub>, k = 0 to n - 1, with w<sub>1</sub> "
      L"the end of S.");
  const wchar_t* const kShifted = L"A signal that begins at 0.";
  table[L"fftshift"] = {{L"fftshift(S)",
                         L"Rotates the samples so that 0 comes into the middle.",
                         {S(kShifted, kNumbers)}}};
  table[L"ifftshift"] = {
      {L"ifftshift(S)",
       L"Rotates the samples so that those of fftshift come back to their order.",
       {S(kShifted, kNumbers)}}};
  const ArgumentHelp matrix{L"A", kNumbers, L"matrix", false, L"The matrix."};
  table[L"fft2d"] = {
      {L"fft2d(A)", L"Fourier transform over rows and columns, unscaled.", {matrix}}};
  table[L"ifft2d"] = {
      {L"ifft2d(A)", L"Inverse Fourier transform over rows and columns: undoes fft2d.", {matrix}}};
}

}  // namespace corvath::calculator
