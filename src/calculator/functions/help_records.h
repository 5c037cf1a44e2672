#pragma once

#include "calculator/function_help.h"

#include <string>
#include <utility>
#include <vector>

/// What the help records are made of. Internal.
namespace corvath::calculator::help {

constexpr const wchar_t* kNumbers = L"real, complex";
constexpr const wchar_t* kReal = L"real";
constexpr const wchar_t* kAll = L"scalar, vector, matrix, signal, xy-data";
constexpr const wchar_t* kSignals = L"signal, xy-data";

/// The argument x.
inline ArgumentHelp X(const wchar_t* description, const wchar_t* types = kAll,
                      const wchar_t* values = kNumbers) {
  return {L"x", values, types, false, description};
}

/// The argument S, a real signal unless `values` says otherwise.
inline ArgumentHelp S(const wchar_t* description, const wchar_t* values = kReal) {
  return {L"S", values, kSignals, false, description};
}

/// A real number, or one of the constants `types`.
inline ArgumentHelp Number(const wchar_t* name, const wchar_t* description, bool optional = false,
                           const wchar_t* types = L"scalar") {
  return {name, kReal, types, optional, description};
}

/// The function of one argument that works on every number of it.
inline void AddEach(HelpTable& table, const wchar_t* name, const wchar_t* text) {
  table[name] = {{std::wstring(name) + L"(x)",
                  std::wstring(text) + L" of each number of x.",
                  {X(L"The numbers.")}}};
}

/// The records of `of` for a function that bears a second name, or differs in nothing else.
inline void AddSecondName(HelpTable& table, const std::wstring& name, const std::wstring& of) {
  std::vector<FunctionHelp> records = table.at(of);
  for (FunctionHelp& record : records) record.signature.replace(0, of.size(), name);
  table[name] = std::move(records);
}

// How to resample.
inline ArgumentHelp Interpolation() {
  return Number(L"interpolation", L"How to resample a signal that is not equidistant.", false,
                L"SPLINE, LINEAR, QUAD");
}
inline ArgumentHelp FirstSlope() {
  return Number(L"d0", L"The slope at the begin, for SPLINE.");
}
inline ArgumentHelp LastSlope() {
  return Number(L"d1", L"The slope at the end, for SPLINE.");
}

}  // namespace corvath::calculator::help
