#include "calculator/function_help.h"

namespace corvath::calculator {

namespace {

const wchar_t* const kNumbers = L"real, complex";
const wchar_t* const kReal = L"real";
const wchar_t* const kAll = L"scalar, vector, matrix, signal, xy-data";

ArgumentHelp X(const wchar_t* description, const wchar_t* types = kAll,
               const wchar_t* values = kNumbers) {
  return {L"x", values, types, false, description};
}

/// The function of one argument that works on every number of it.
void AddEach(HelpTable& help, const wchar_t* name, const wchar_t* text) {
  help[name] = {{std::wstring(name) + L"(x)",
                 std::wstring(text) + L" of each number of x.",
                 {X(L"The numbers.")}}};
}

void AddElementary(HelpTable& help) {
  AddEach(help, L"sin", L"Sine");
  AddEach(help, L"cos", L"Cosine");
  AddEach(help, L"tan", L"Tangent");
  AddEach(help, L"asin", L"Inverse sine");
  AddEach(help, L"acos", L"Inverse cosine");
  AddEach(help, L"atan", L"Inverse tangent");
  AddEach(help, L"sinh", L"Hyperbolic sine");
  AddEach(help, L"cosh", L"Hyperbolic cosine");
  AddEach(help, L"tanh", L"Hyperbolic tangent");
  AddEach(help, L"asinh", L"Inverse hyperbolic sine");
  AddEach(help, L"acosh", L"Inverse hyperbolic cosine");
  AddEach(help, L"atanh", L"Inverse hyperbolic tangent");
  AddEach(help, L"deg2rad", L"Radians of the degrees");
  AddEach(help, L"rad2deg", L"Degrees of the radians");
  AddEach(help, L"log", L"Logarithm to base 10");
  AddEach(help, L"ln", L"Natural logarithm");
  AddEach(help, L"exp", L"Exponential e<sup>x</sup>");
  AddEach(help, L"sqrt", L"Square root, principal branch,");
  AddEach(help, L"ceil", L"Next integer above real and imaginary part");
  AddEach(help, L"floor", L"Next integer below real and imaginary part");
  AddEach(help, L"inf2nan", L"The number itself, or NaN where it is infinite,");
  help[L"sgn"] = {{L"sgn(x)",
                   L"Sign of a number: 1, -1 or 0; of a complex one x/|x|.",
                   {X(L"The number.", L"scalar")}}};
  help[L"atan2"] = {
      {L"atan2(y, x)",
       L"Angle of the points (x, y).",
       {{L"y", kReal, L"scalar, vector, matrix", false, L"The ordinates."},
        {L"x", kReal, L"scalar, vector, matrix", false, L"The abscissae, of the same size."}}},
      {L"atan2(x)",
       L"Angle of a complex number, or of the points of a signal.",
       {X(L"The number or the signal.", L"scalar, signal, xy-data")}}};
  help[L"mod"] = {
      {L"mod(x, y)",
       L"Remainder x - y floor(x/y).",
       {X(L"The dividend."),
        {L"y", kNumbers, kAll, false, L"The divisor: a scalar, or of the kind of x."}}}};
  help[L"round"] = {
      {L"round(x [, d])",
       L"Rounds real and imaginary parts; halves go away from zero.",
       {X(L"The numbers."),
        {L"d", kReal, L"scalar", true,
         L"The number of decimal places, which may be negative (default value is 0)."}}}};
  help[L"min"] = {
      {L"min(x)",
       L"Smallest number. For each channel of a signal its abscissa and value, for xy-data this "
       L"pair.",
       {X(L"The numbers.", kAll, kReal)}},
      {L"min(x<sub>1</sub>, ..., x<sub>n</sub>)",
       L"Smallest of the numbers.",
       {X(L"The numbers.", L"scalar", kReal)}}};
  help[L"rand"] = {
      {L"rand(x, dt, p)",
       L"Random numbers in the shape of x.",
       {X(L"Gives kind and size of the result."),
        {L"dt", kReal, L"UNIFORM, NORMAL, LOGNORMAL, TRIANGLE, CAUCHY, EXPONENTIAL", false,
         L"The distribution."},
        {L"p", kReal, L"vector", false,
         L"Its parameters: lower and upper end; mean and standard deviation (of the logarithm for "
         L"LOGNORMAL); lower end, mode and upper end; median and scale; rate."}}}};
}

void AddStatistics(HelpTable& help) {
  const auto per_row = [&](const wchar_t* name, const wchar_t* text) {
    help[name] = {{std::wstring(name) + L"(x)",
                   std::wstring(text) + L" Of a matrix for each row, of a signal for each channel.",
                   {X(L"The numbers.")}}};
  };
  per_row(L"sum", L"Sum of the numbers.");
  per_row(L"mean", L"Mean of the numbers.");
  per_row(L"stddev", L"Standard deviation of the numbers.");
  const ArgumentHelp signal{L"S", kReal, L"signal, xy-data", false, L"The signal."};
  const ArgumentHelp other{L"T", kReal, L"signal, xy-data", false, L"The signal to compare with."};
  const ArgumentHelp power{L"q", kReal, L"scalar", false, L"The power."};
  help[L"rms"] = {{L"rms(S)", L"Root mean square of each channel over the abscissa.", {signal}}};
  help[L"rmsdev"] = {
      {L"rmsdev(S, T)", L"Root mean square of the difference of two signals.", {signal, other}}};
  help[L"powmean"] = {
      {L"powmean(S, q)", L"q-th root of the mean of the q-th powers.", {signal, power}}};
  help[L"powmeandev"] = {{L"powmeandev(S, T, q)",
                          L"q-th root of the mean of the q-th powers of the difference.",
                          {signal, other, power}}};
}

void AddComplex(HelpTable& help) {
  AddEach(help, L"conj", L"Conjugate");
  AddEach(help, L"abs", L"Magnitude");
  AddEach(help, L"arg", L"Phase, in radians,");
  AddEach(help, L"real", L"Real part");
  AddEach(help, L"imag", L"Imaginary part");
  help[L"cplx"] = {{L"cplx(a, b)",
                    L"Complex numbers a + b i.",
                    {{L"a", kReal, kAll, false, L"The real parts."},
                     {L"b", kReal, kAll, false, L"The imaginary parts, of the same kind."}}}};
  help[L"cart2pol"] = {{L"cart2pol(x)",
                        L"Magnitude and phase: of a scalar a vector of both, of a vector a matrix "
                        L"of two rows, otherwise two rows for each row.",
                        {X(L"The numbers.")}}};
  help[L"pol2cart"] = {{L"pol2cart(x)",
                        L"Complex numbers of magnitude and phase, which follow each other in a "
                        L"vector or are the rows 2k and 2k+1.",
                        {X(L"Magnitudes and phases.", L"vector, matrix, signal", kReal)}}};
  help[L"norm"] = {
      {L"norm(x)", L"Square of the magnitude of each number of x.", {X(L"The numbers.")}},
      {L"norm(x, n)",
       L"n-th norm of all numbers: (sum |x<sub>i</sub>|<sup>n</sup>)<sup>1/n</sup>.",
       {X(L"The numbers."), {L"n", kReal, L"scalar", false, L"The power."}}}};
}

void AddLinearAlgebra(HelpTable& help) {
  const auto of_matrix = [&](const wchar_t* name, const wchar_t* text, const wchar_t* types) {
    help[name] = {
        {std::wstring(name) + L"(A)", text, {{L"A", kNumbers, types, false, L"The matrix."}}}};
  };
  of_matrix(L"transpose", L"Rows and columns exchanged, without conjugation.", L"matrix");
  of_matrix(L"invert", L"Inverse of a square matrix, 1/x of each number of a vector or scalar.",
            L"boolean, scalar, vector, matrix");
  of_matrix(L"lufactorize",
            L"Triangular factors without pivoting: U, and below the diagonal L without its unit "
            L"diagonal.",
            L"matrix");
  help[L"euklidnorm"] = {
      {L"euklidnorm(x)", L"Euclidean norm of all numbers.", {X(L"The numbers.")}}};
  const auto of_two = [&](const wchar_t* name, const wchar_t* text, const wchar_t* types) {
    help[name] = {
        {std::wstring(name) + L"(x, y)",
         text,
         {X(L"The first factor.", types), {L"y", kNumbers, types, false, L"The second one."}}}};
  };
  of_two(L"innerprod", L"Sum of the products, without conjugation.", L"vector");
  of_two(L"outerprod", L"Matrix of all products.", L"vector");
  of_two(L"matrixmult", L"Matrix product.", L"vector, matrix");
  of_two(L"times", L"Product number by number.", kAll);
}

void AddConstructors(HelpTable& help) {
  help[L"vector"] = {{L"vector(x<sub>1</sub>, ..., x<sub>n</sub>)",
                      L"All numbers in one vector.",
                      {X(L"The parts.", L"boolean, scalar, vector")}}};
  help[L"matrix"] = {{L"matrix(x<sub>1</sub>, ..., x<sub>n</sub>)",
                      L"The arguments as rows of one matrix.",
                      {X(L"The rows.", L"boolean, scalar, vector, matrix")}}};
  help[L"signal"] = {{L"signal(v, x<sub>0</sub>, ..., x<sub>n</sub>)",
                      L"Signal over an abscissa, or more channels for a signal.",
                      {{L"v", kReal, L"vector, signal", false, L"The abscissa, or a signal."},
                       X(L"The channels.", L"vector, signal")}}};
  help[L"xydata"] = {{L"xydata(x, y)",
                      L"Curve of points (x, y).",
                      {X(L"The abscissae.", L"vector", kReal),
                       {L"y", kNumbers, L"vector", false, L"The ordinates."}}},
                     {L"xydata(x)",
                      L"Curve from a matrix of two rows or a signal of one channel.",
                      {X(L"The points.", L"matrix, signal, xy-data")}}};
  help[L"linspace"] = {{L"linspace(a, b, n)",
                        L"Equidistant numbers.",
                        {{L"a", kReal, L"scalar", false, L"The first one."},
                         {L"b", kReal, L"scalar", false, L"The last one."},
                         {L"n", kReal, L"scalar", false, L"Their number."}}}};
}

void AddSignals(HelpTable& help) {
  const ArgumentHelp signal{L"S", kReal, L"signal, xy-data", false, L"The signal."};
  const ArgumentHelp other{L"T", kReal, L"signal, xy-data", false, L"The other signal."};
  const auto number = [](const wchar_t* name, const wchar_t* description, bool optional = false) {
    return ArgumentHelp{name, kReal, L"scalar", optional, description};
  };
  const ArgumentHelp direction{
      L"d", kReal, L"FORWARD, BACKWARD", false,
      L"Whether results stand at the first or last abscissa of intervals."};
  const ArgumentHelp type{L"type", kReal, L"SPLINE, LINEAR, QUAD", true,
                          L"The interpolation (default value is LINEAR)."};
  const ArgumentHelp d0 = number(L"d0", L"The slope at the begin, for SPLINE.", true);
  const ArgumentHelp d1 = number(L"d1", L"The slope at the end, for SPLINE.", true);
  help[L"lct"] = {
      {L"lct(S, T)", L"Abscissae of both signals in the range that they share.", {signal, other}}};
  help[L"extract"] = {{L"extract(x, i)",
                       L"Rows by number; row 0 of a signal is its abscissa.",
                       {X(L"The rows.", L"matrix, signal, xy-data"),
                        {L"i", kReal, L"scalar, vector", false, L"The numbers."}}}};
  help[L"window"] = {{L"window(S, a, b)",
                      L"The samples with abscissae from a to b.",
                      {signal, number(L"a", L"The begin."), number(L"b", L"The end.")}}};
  help[L"derive"] = {{L"derive(S, d)", L"Difference quotients.", {signal, direction}}};
  help[L"integrate"] = {{L"integrate(S, d)", L"Running integral.", {signal, direction}}};
  help[L"area"] = {{L"area(S)", L"Integral of each channel.", {signal}},
                   {L"area(S, a, b)",
                    L"Integral from a to b.",
                    {signal, number(L"a", L"The begin."), number(L"b", L"The end.")}}};
  help[L"mapping"] = {{L"mapping(S, T, type, d0, d1)",
                       L"The channels of both on one abscissa.",
                       {signal, other, type, d0, d1}}};
  help[L"sort"] = {{L"sort(x)",
                    L"Numbers, or samples by their abscissa, in ascending order.",
                    {X(L"What to sort.", L"vector, signal, xy-data", kReal)}}};
  help[L"interpolate"] = {
      {L"interpolate(S, at [, type [, d0, d1]])",
       L"The signal at other abscissae.",
       {signal,
        {L"at", kReal, L"scalar, vector", false, L"The step of the new abscissa, or itself."},
        type,
        d0,
        d1}}};
}

void AddQueries(HelpTable& help) {
  help[L"size"] = {
      {L"size(x)", L"Number of elements.", {X(L"The elements.", L"boolean, scalar, vector")}}};
  help[L"size1"] = {
      {L"size1(x)", L"Number of rows or channels; length of a vector.", {X(L"The value.")}}};
  help[L"size2"] = {{L"size2(x)", L"Number of columns or samples.", {X(L"The value.")}}};
}

}  // namespace

const HelpTable& GetFunctionHelp() {
  static const HelpTable table = [] {
    HelpTable help;
    AddElementary(help);
    AddStatistics(help);
    AddComplex(help);
    AddLinearAlgebra(help);
    AddConstructors(help);
    AddSignals(help);
    AddQueries(help);
    return help;
  }();
  return table;
}

}  // namespace corvath::calculator
