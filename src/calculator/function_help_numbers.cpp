#include "calculator/function_help_records.h"

// Help for the mathematics of numbers.
namespace corvath::calculator::help {

namespace {

/// The function of one argument that works on every number of it.
void AddEach(HelpTable& table, const wchar_t* name, const wchar_t* text) {
  table[name] = {{std::wstring(name) + L"(x)",
                  std::wstring(text) + L" of each number of x.",
                  {X(L"The numbers.")}}};
}

void AddElementary(HelpTable& table) {
  AddEach(table, L"sin", L"Sine");
  AddEach(table, L"cos", L"Cosine");
  AddEach(table, L"tan", L"Tangent");
  AddEach(table, L"asin", L"Inverse sine");
  AddEach(table, L"acos", L"Inverse cosine");
  AddEach(table, L"atan", L"Inverse tangent");
  AddEach(table, L"sinh", L"Hyperbolic sine");
  AddEach(table, L"cosh", L"Hyperbolic cosine");
  AddEach(table, L"tanh", L"Hyperbolic tangent");
  AddEach(table, L"asinh", L"Inverse hyperbolic sine");
  AddEach(table, L"acosh", L"Inverse hyperbolic cosine");
  AddEach(table, L"atanh", L"Inverse hyperbolic tangent");
  AddEach(table, L"deg2rad", L"Radians of the degrees");
  AddEach(table, L"rad2deg", L"Degrees of the radians");
  AddEach(table, L"log", L"Logarithm to base 10");
  AddEach(table, L"ln", L"Natural logarithm");
  AddEach(table, L"exp", L"Exponential e<sup>x</sup>");
  AddEach(table, L"sqrt", L"Square root, principal branch,");
  AddEach(table, L"ceil", L"Next integer above real and imaginary part");
  AddEach(table, L"floor", L"Next integer below real and imaginary part");
  AddEach(table, L"inf2nan", L"The number itself, or NaN where it is infinite,");
  table[L"sgn"] = {{L"sgn(x)",
                    L"Sign of a number: 1, -1 or 0; of a complex one x/|x|.",
                    {X(L"The number.", L"scalar")}}};
  table[L"atan2"] = {
      {L"atan2(y, x)",
       L"Angle of the points (x, y).",
       {{L"y", kReal, L"scalar, vector, matrix", false, L"The ordinates."},
        {L"x", kReal, L"scalar, vector, matrix", false, L"The abscissae, of the same size."}}},
      {L"atan2(x)",
       L"Angle of a complex number, or of the points of a signal.",
       {X(L"The number or the signal.", L"scalar, signal, xy-data")}}};
  table[L"mod"] = {
      {L"mod(x, y)",
       L"Remainder x - y floor(x/y).",
       {X(L"The dividend."),
        {L"y", kNumbers, kAll, false, L"The divisor: a scalar, or of the kind of x."}}}};
  table[L"round"] = {
      {L"round(x [, d])",
       L"Rounds real and imaginary parts; halves go away from zero.",
       {X(L"The numbers."),
        {L"d", kReal, L"scalar", true,
         L"The number of decimal places, which may be negative (default value is 0)."}}}};
  table[L"min"] = {
      {L"min(x)",
       L"Smallest number. For each channel of a signal its abscissa and value, for xy-data this "
       L"pair.",
       {X(L"The numbers.", kAll, kReal)}},
      {L"min(x<sub>1</sub>, ..., x<sub>n</sub>)",
       L"Smallest of the numbers.",
       {X(L"The numbers.", L"scalar", kReal)}}};
  table[L"rand"] = {
      {L"rand(x, dt, p)",
       L"Random numbers in the shape of x.",
       {X(L"Gives kind and size of the result."),
        {L"dt", kReal, L"UNIFORM, NORMAL, LOGNORMAL, TRIANGLE, CAUCHY, EXPONENTIAL", false,
         L"The distribution."},
        {L"p", kReal, L"vector", false,
         L"Its parameters: lower and upper end; mean and standard deviation (of the logarithm for "
         L"LOGNORMAL); lower end, mode and upper end; median and scale; rate."}}}};
}

void AddStatistics(HelpTable& table) {
  const auto per_row = [&](const wchar_t* name, const wchar_t* text) {
    table[name] = {
        {std::wstring(name) + L"(x)",
         std::wstring(text) + L" Of a matrix for each row, of a signal for each channel.",
         {X(L"The numbers.")}}};
  };
  per_row(L"sum", L"Sum of the numbers.");
  per_row(L"mean", L"Mean of the numbers.");
  per_row(L"stddev", L"Standard deviation of the numbers.");
  const ArgumentHelp signal = S(L"The signal.");
  const ArgumentHelp other{L"T", kReal, kSignals, false, L"The signal to compare with."};
  const ArgumentHelp power = Number(L"q", L"The power, an integer from 1 on.");
  table[L"rms"] = {{L"rms(S)", L"Root mean square of each channel over the abscissa.", {signal}}};
  table[L"rmsdev"] = {
      {L"rmsdev(S, T)", L"Root mean square of the difference of two signals.", {signal, other}}};
  table[L"powmean"] = {
      {L"powmean(S, q)", L"q-th root of the mean of the q-th powers.", {signal, power}}};
  table[L"powmeandev"] = {{L"powmeandev(S, T, q)",
                           L"q-th root of the mean of the q-th powers of the difference.",
                           {signal, other, power}}};
}

void AddComplex(HelpTable& table) {
  AddEach(table, L"conj", L"Conjugate");
  AddEach(table, L"abs", L"Magnitude");
  AddEach(table, L"arg", L"Phase, in radians,");
  AddEach(table, L"real", L"Real part");
  AddEach(table, L"imag", L"Imaginary part");
  table[L"cplx"] = {{L"cplx(a, b)",
                     L"Complex numbers a + b i.",
                     {{L"a", kReal, kAll, false, L"The real parts."},
                      {L"b", kReal, kAll, false, L"The imaginary parts, of the same kind."}}}};
  table[L"cart2pol"] = {{L"cart2pol(x)",
                         L"Magnitude and phase. A scalar gives a vector of both, a vector a matrix "
                         L"of two rows, other values two rows for each row.",
                         {X(L"The numbers.")}}};
  table[L"pol2cart"] = {
      {L"pol2cart(x)",
       L"Complex numbers of magnitude and phase. They follow each other in a vector, "
       L"or are the rows 2k and 2k+1.",
       {X(L"Magnitudes and phases.", L"vector, matrix, signal", kReal)}}};
  table[L"norm"] = {
      {L"norm(x)", L"Square of the magnitude of each number of x.", {X(L"The numbers.")}},
      {L"norm(x, n)",
       L"n-th norm of all numbers: (sum |x<sub>i</sub>|<sup>n</sup>)<sup>1/n</sup>.",
       {X(L"The numbers."), {L"n", kReal, L"scalar", false, L"The power."}}}};
}

void AddLinearAlgebra(HelpTable& table) {
  const auto of_matrix = [&](const wchar_t* name, const wchar_t* text, const wchar_t* types) {
    table[name] = {
        {std::wstring(name) + L"(A)", text, {{L"A", kNumbers, types, false, L"The matrix."}}}};
  };
  of_matrix(L"transpose", L"Rows and columns exchanged, without conjugation.", L"matrix");
  of_matrix(L"invert", L"Inverse of a square matrix, 1/x of each number of a vector or scalar.",
            L"boolean, scalar, vector, matrix");
  of_matrix(L"lufactorize",
            L"Triangular factors without pivoting. The result is U, and below the diagonal L "
            L"without its unit "
            L"diagonal.",
            L"matrix");
  table[L"euklidnorm"] = {
      {L"euklidnorm(x)", L"Euclidean norm of all numbers.", {X(L"The numbers.")}}};
  const auto of_two = [&](const wchar_t* name, const wchar_t* text, const wchar_t* types) {
    table[name] = {
        {std::wstring(name) + L"(x, y)",
         text,
         {X(L"The first factor.", types), {L"y", kNumbers, types, false, L"The second one."}}}};
  };
  of_two(L"innerprod", L"Sum of the products, without conjugation.", L"vector");
  of_two(L"outerprod", L"Matrix of all products.", L"vector");
  of_two(L"matrixmult", L"Matrix product.", L"vector, matrix");
  of_two(L"times", L"Product number by number.", kAll);
}

void AddModal(HelpTable& table) {
  const auto modes = [](const wchar_t* name, const wchar_t* description) {
    return ArgumentHelp{name, kNumbers, L"matrix", false, description};
  };
  const ArgumentHelp a = modes(L"A", L"Modal vectors, one in each column.");
  const ArgumentHelp b = modes(L"B", L"The modal vectors to compare with, with as many rows.");
  table[L"mac"] = {
      {L"mac(A, B)",
       L"Modal assurance criterion of the columns. It is 1 for parallel vectors of any complex "
       L"scale, 0 for orthogonal ones.<br>|a<sup>H</sup>b|<sup>2</sup> / "
       L"(|a|<sup>2</sup>|b|<sup>2</sup>) "
       L"for column a of A in the rows, b of B in the columns of the result.",
       {a, b}}};
  table[L"comac"] = {
      {L"comac(A, B)",
       L"Modal assurance criterion of the rows, one for each pair of degrees of freedom.",
       {a, modes(L"B", L"The modal vectors to compare with, of the same size.")}}};
  table[L"sdi"] = {
      {L"sdi(A, B)",
       L"Signature difference indicator of the columns. It sees their scale too and is 1 for equal "
       L"vectors.<br>4 (Re a<sup>H</sup>b / (|a|<sup>2</sup> + |b|<sup>2</sup>))<sup>2</sup> for "
       L"column a of A in the rows, b of B in the columns of the result.",
       {a, b}}};
  table[L"modepairs"] = {
      {L"modepairs(A, B, r)",
       L"Index of the column of A that each column of B pairs with. It is the one of the highest "
       L"mac, if that is above r; else NaN.",
       {a, b, Number(L"r", L"The limit, which mac must exceed.")}}};
}

}  // namespace

void AddNumberHelp(HelpTable& table) {
  AddElementary(table);
  AddStatistics(table);
  AddComplex(table);
  AddLinearAlgebra(table);
  AddModal(table);
}

}  // namespace corvath::calculator::help
