#pragma once

#include "foundation/exception.h"

#include <functional>
#include <string>

namespace corvath::analysis {

/// Called now and then with the share that is done, 0 to 1, and what is in work. False ends the
/// analysis with AnalysisCancelled. Called on the thread of the analysis, one call at a time.
using Progress = std::function<bool(double share, const std::wstring& work)>;

/// The progress callback said so; nothing else has happened.
class AnalysisCancelled : public utils::runtime_error {
 public:
  AnalysisCancelled() : utils::runtime_error(L"The analysis was cancelled.") {}
};

/// What is asked for cannot be done; the text says why.
class AnalysisError : public utils::runtime_error {
 public:
  using utils::runtime_error::runtime_error;
};

/// @param progress  may be empty
/// @throws AnalysisCancelled  it returned false
void Report(const Progress& progress, double share, const std::wstring& work);

/// The part of a progress from `begin` to `end`, as a progress of its own.
Progress PartOf(const Progress& progress, double begin, double end);

}  // namespace corvath::analysis
