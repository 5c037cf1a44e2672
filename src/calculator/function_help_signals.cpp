#include "calculator/function_help_records.h"

// Help for what builds signals, works on them, and asks for sizes.
namespace corvath::calculator::help {

namespace {

void AddConstructors(HelpTable& table) {
  table[L"vector"] = {{L"vector(x<sub>1</sub>, ..., x<sub>n</sub>)",
                       L"All numbers in one vector.",
                       {X(L"The parts.", L"boolean, scalar, vector")}}};
  table[L"matrix"] = {{L"matrix(x<sub>1</sub>, ..., x<sub>n</sub>)",
                       L"The arguments as rows of one matrix.",
                       {X(L"The rows.", L"boolean, scalar, vector, matrix")}}};
  table[L"signal"] = {{L"signal(v, x<sub>0</sub>, ..., x<sub>n</sub>)",
                       L"Signal over an abscissa, or more channels for a signal.",
                       {{L"v", kReal, L"vector, signal", false, L"The abscissa, or a signal."},
                        X(L"The channels.", L"vector, signal")}}};
  table[L"xydata"] = {{L"xydata(x, y)",
                       L"Curve of points (x, y).",
                       {X(L"The abscissae.", L"vector", kReal),
                        {L"y", kNumbers, L"vector", false, L"The ordinates."}}},
                      {L"xydata(x)",
                       L"Curve from a matrix of two rows or a signal of one channel.",
                       {X(L"The points.", L"matrix, signal, xy-data")}}};
  table[L"linspace"] = {{L"linspace(a, b, n)",
                         L"Equidistant numbers.",
                         {{L"a", kReal, L"scalar", false, L"The first one."},
                          {L"b", kReal, L"scalar", false, L"The last one."},
                          {L"n", kReal, L"scalar", false, L"Their number."}}}};
}

void AddSignals(HelpTable& table) {
  const ArgumentHelp signal = S(L"The signal.");
  const ArgumentHelp other{L"T", kReal, kSignals, false, L"The other signal."};
  const ArgumentHelp direction{
      L"d", kReal, L"FORWARD, BACKWARD", false,
      L"Whether the results stand at the first or the last abscissa of the intervals."};
  const auto type = [](bool optional, const wchar_t* description) {
    return Number(L"type", description, optional, L"SPLINE, LINEAR, QUAD");
  };
  table[L"lct"] = {
      {L"lct(S, T)", L"Abscissae of both signals in the range that they share.", {signal, other}}};
  table[L"extract"] = {{L"extract(x, i)",
                        L"Rows by number. A number gives a vector, several a matrix.",
                        {X(L"The rows; row 0 of a signal is its abscissa, row k its k-th channel.",
                           L"matrix, signal, xy-data"),
                         {L"i", kReal, L"scalar, vector", false, L"The numbers, from 0."}}}};
  table[L"window"] = {{L"window(S, a, b)",
                       L"The samples with abscissae from a to b; uninitialized if there are none.",
                       {signal, Number(L"a", L"The begin."), Number(L"b", L"The end.")}}};
  table[L"derive"] = {
      {L"derive(S, d)", L"Difference quotients, one less than samples.", {signal, direction}}};
  table[L"integrate"] = {{L"integrate(S, d)",
                          L"Running integral by the trapezoidal rule, one value less than samples.",
                          {signal, direction}}};
  table[L"area"] = {{L"area(S)",
                     L"Integral of each channel by the trapezoidal rule.",
                     {S(L"The signal.", kNumbers)}},
                    {L"area(S, a, b)",
                     L"Integral from a to b, both inside the signal.",
                     {signal, Number(L"a", L"The begin."), Number(L"b", L"The end.")}}};
  table[L"mapping"] = {{L"mapping(S, T, type, d0, d1)",
                        L"The channels of both signals on one abscissa, equal channels once.",
                        {signal, other, type(false, L"The interpolation where abscissae differ."),
                         Number(L"d0", L"The slope at the begin, for SPLINE."),
                         Number(L"d1", L"The slope at the end, for SPLINE.")}}};
  table[L"sort"] = {{L"sort(x)",
                     L"Numbers, or samples by their abscissa, in ascending order.",
                     {X(L"What to sort.", L"scalar, vector, signal, xy-data", kReal)}}};
  table[L"interpolate"] = {
      {L"interpolate(S, at [, type [, d0, d1]])",
       L"The signal at other abscissae. SPLINE is a cubic spline, LINEAR a polygon, QUAD parabolas "
       L"through three neighbours; a number n above 2 is one polynomial through all n + 1 samples.",
       {signal,
        {L"at", kReal, L"scalar, vector", false,
         L"The new abscissae, or the step between them from the first to the last one of S."},
        type(true, L"The interpolation (default value is LINEAR)."),
        Number(L"d0", L"The slope at the begin, for SPLINE (default value is 0).", true),
        Number(L"d1", L"The slope at the end, for SPLINE (default value is 0).", true)}}};
}

void AddPeaks(HelpTable& table) {
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

void AddSizes(HelpTable& table) {
  table[L"size"] = {
      {L"size(x)", L"Number of elements.", {X(L"The elements.", L"boolean, scalar, vector")}}};
  table[L"size1"] = {
      {L"size1(x)", L"Number of rows or channels; length of a vector.", {X(L"The value.")}}};
  table[L"size2"] = {{L"size2(x)", L"Number of columns or samples.", {X(L"The value.")}}};
}

}  // namespace

void AddSignalHelp(HelpTable& table) {
  AddConstructors(table);
  AddSignals(table);
  AddPeaks(table);
  AddSizes(table);
}

}  // namespace corvath::calculator::help
