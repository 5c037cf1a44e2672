#pragma once

#include "analysis/progress.h"
#include "foundation/text.h"
#include "study/progress.h"
#include "study/refusal.h"

namespace corvath::study {

/// `run(progress)` of an analysis, with its exceptions as those of a call.
/// @throws Refusal    what was asked for cannot be done
/// @throws Cancelled  `progress` said so
template <class Run>
auto RunAnalysis(const Progress& progress, const Run& run) {
  try {
    return run(!progress ? analysis::Progress()
                         : [&progress](double share, const std::wstring& work) {
                             return progress(share, utils::ToUtf8(work));
                           });
  } catch (const analysis::AnalysisCancelled&) {
    throw Cancelled();
  } catch (const analysis::AnalysisError& error) {
    throw Refusal(utils::ToUtf8(error.GetMessage()));
  }
}

}  // namespace corvath::study
