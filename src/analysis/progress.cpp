#include "analysis/progress.h"

namespace corvath::analysis {

void Report(const Progress& progress, double share, const std::wstring& work) {
  if (progress && !progress(share, work)) throw AnalysisCancelled();
}

Progress PartOf(const Progress& progress, double begin, double end) {
  if (!progress) return {};
  return [=](double share, const std::wstring& work) {
    return progress(begin + share * (end - begin), work);
  };
}

}  // namespace corvath::analysis
