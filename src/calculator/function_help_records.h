#pragma once

#include "calculator/function_help.h"

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

// One function for each file of records.
void AddNumberHelp(HelpTable& table);
void AddSignalHelp(HelpTable& table);

}  // namespace corvath::calculator::help
