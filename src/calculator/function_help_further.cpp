#include "calculator/function_help_records.h"

#include <initializer_list>
#include <string>

namespace corvath::calculator {

namespace {

using namespace help;

constexpr const wchar_t* kHowFiltersRun =
    L"<br>Runs forward in time and, if backward is true, over the outcome backward in time: no "
    L"phase is left, the gain counts twice. Each channel is filtered for itself; a signal that is "
    L"not equidistant is resampled first, to its smallest step.";

ArgumentHelp Interpolation() {
  return Number(L"interpolation", L"How to resample a signal that is not equidistant.", false,
                L"SPLINE, LINEAR, QUAD");
}
ArgumentHelp FirstSlope() {
  return Number(L"d0", L"The slope at the begin, for SPLINE.");
}
ArgumentHelp LastSlope() {
  return Number(L"d1", L"The slope at the end, for SPLINE.");
}

/// The signal, `own` arguments, then those of the run.
void AddRecursive(HelpTable& table, const std::wstring& name, const wchar_t* text,
                  std::initializer_list<ArgumentHelp> own) {
  FunctionHelp record{name + L"(S", std::wstring(text) + kHowFiltersRun, {S(L"The signal.")}};
  record.arguments.insert(record.arguments.end(), own);
  for (const ArgumentHelp& argument :
       {Interpolation(), FirstSlope(), LastSlope(),
        Number(L"start1", L"What stood in front of the first sample: zeros, or the sample itself.",
               false, L"ZERO, CONSTANT"),
        Number(L"start2", L"The same for the run backward.", false, L"ZERO, CONSTANT"),
        ArgumentHelp{L"backward", L"TRUE, FALSE", L"boolean", false, L"Whether to run backward."}})
    record.arguments.push_back(argument);
  for (std::size_t i = 1; i < record.arguments.size(); ++i)
    record.signature += L", " + record.arguments[i].name;
  record.signature += L")";
  table[name] = {std::move(record)};
}

void AddFilters(HelpTable& table) {
  const ArgumentHelp cf{L"cf", kReal, L"scalar, vector", false,
                        L"The cut-off, below half the sampling rate, in cycles per unit of the "
                        L"abscissa; for BANDPASS and BANDSTOP a vector of lower and upper edge."};
  const ArgumentHelp order = Number(L"order", L"The order, from 1 on.");
  const ArgumentHelp type =
      Number(L"type", L"What passes.", false, L"LOWPASS, HIGHPASS, BANDPASS, BANDSTOP");
  AddRecursive(table, L"butterworthFilter",
               L"Butterworth filter: flat pass band, 3 dB down at the cut-off.", {cf, order, type});
  AddRecursive(table, L"sineButterworthFilter",
               L"Butterworth filter whose poles p are moved to 2 asin(sin(0.5) p).",
               {cf, order, type});
  AddRecursive(table, L"besselFilter",
               L"Bessel filter: nearly constant delay, 3 dB down at the cut-off.",
               {cf, Number(L"order", L"The order, 1 to 10."), type});
  AddRecursive(table, L"chebyOneFilter",
               L"Chebyshev filter of the first kind: ripple in the pass band. It is steeper than a "
               L"Butterworth filter.",
               {cf,
                Number(L"ripple",
                       L"A positive number e; the gain in the pass band is 1/sqrt(1 + "
                       L"e<sup>2</sup>) to 1."),
                order, type});
  AddRecursive(
      table, L"chebyTwoFilter",
      L"Chebyshev filter of the second kind: ripple in the stop band. That begins at the cut-off.",
      {cf, Number(L"ripple", L"The highest gain in the stop band, between 0 and 1."), order, type});
  AddRecursive(
      table, L"saeFilter", L"Channel filter of SAE J211.",
      {Number(L"cf", L"The channel frequency class, in cycles per unit of the abscissa.")});
  table[L"decimateFilter"] = {
      {L"decimateFilter(S, factor, ratio, interpolation, d0, d1)",
       L"Every factor-th sample of the first channel, behind a low pass. The low pass is a "
       L"Butterworth filter of order 2 without phase; its cut-off is the new sampling rate divided "
       L"by ratio.",
       {S(L"The signal."), Number(L"factor", L"The factor, from 2 on."),
        Number(L"ratio", L"The ratio of the new sampling rate to the cut-off, from 2 on."),
        Interpolation(), FirstSlope(), LastSlope()}}};
  table[L"smoothFilter"] = {
      {L"smoothFilter(S, points)",
       L"Moving average of each sample and its neighbours. At the ends it takes those that are "
       L"there.",
       {S(L"The signal."), Number(L"points",
                                  L"The number of neighbours on either side, from 1 to half the "
                                  L"samples.")}}};
}

void AddFourier(HelpTable& table) {
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

void AddTables(HelpTable& table) {
  const wchar_t* const kRows =
      L"<br>Lines in front of the first one that begins with a number are passed over. Numbers may "
      L"be separated by anything that is no number; the table ends in front of a line that does "
      L"not hold as many numbers as its first row. It becomes a scalar, a vector if it is one row "
      L"or column, otherwise xy-data or a signal if the first column ascends, else a matrix.";
  table[L"read"] = {{L"read(\"file\" [, \"n\"])",
                     std::wstring(L"A table of numbers from a file.") + kRows,
                     {{L"file", L"a path without blanks", L"quoted text", false, L"The file."},
                      {L"n", L"an integer", L"quoted text", true,
                       L"The number of lines to leave out at the begin (default value is 0)."}}}};
  table[L"calculate"] = {{L"calculate(\"text\")",
                          std::wstring(L"A table of numbers from a text.") + kRows +
                              L" Blanks of the text do not count.",
                          {{L"text", L"numbers", L"quoted text", false,
                            L"The table, its numbers separated by semicolons for example."}}}};
}

void AddSecondNames(HelpTable& table) {
  const auto copy = [&](const std::wstring& name, const std::wstring& of) {
    std::vector<FunctionHelp> records = GetFunctionHelp().find(of)->second;
    for (FunctionHelp& record : records) record.signature.replace(0, of.size(), name);
    table[name] = std::move(records);
  };
  copy(L"vec", L"vector");
  copy(L"mat", L"matrix");
  copy(L"series", L"signal");
  copy(L"max", L"min");
  for (FunctionHelp& record : table[L"max"]) record.text.replace(0, 8, L"Largest");  // "Smallest"
}

void AddQueries(HelpTable& table) {
  const auto add = [&](const std::wstring& name, const std::wstring& text) {
    table[name] = {{name + L"(x)",
                    text,
                    {{L"x", kNumbers, std::wstring(L"boolean, ") + kAll, false, L"The value."}}}};
  };
  const std::wstring looked_at =
      L" Real and imaginary parts count, of a signal those of the abscissa too.";
  add(L"isnan", L"Whether a number of x is NaN." + looked_at);
  add(L"isinf", L"Whether a number of x is infinite." + looked_at);
  add(L"isfinite", L"Whether no number of x is NaN or infinite." + looked_at);
  add(L"isnormal", L"Whether a number of x is neither 0, subnormal, infinite nor NaN." + looked_at);
  add(L"isinitialized", L"Whether x has a value at all.");
  add(L"isscalar", L"Whether x is a scalar.");
  add(L"iscomplex", L"Whether x holds a number that is not real.");
  add(L"ismatrix", L"Whether x is a matrix.");
  add(L"isvector", L"Whether x is a vector.");
  add(L"isbool", L"Whether x is a truth value.");
  add(L"isxydata", L"Whether x is xy-data.");
  add(L"issignal", L"Whether x is a signal; xy-data are none.");
}

}  // namespace

const HelpTable& GetFurtherFunctionHelp() {
  static const HelpTable table = [] {
    HelpTable result;
    AddFilters(result);
    AddFourier(result);
    AddTables(result);
    AddSecondNames(result);
    AddQueries(result);
    return result;
  }();
  return table;
}

}  // namespace corvath::calculator
