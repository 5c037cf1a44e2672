#pragma once

#include "analysis/study_model.h"

#include <string>

namespace corvath::analysis {

/// Refuses a text in which the name of an input, response or criterion denotes a constant of
/// expressions, e or PI for example: its value would silently be the constant's.
/// @throws AnalysisError  with that name; nothing of a text that is no expression
void RefuseHiddenNames(const StudyModel& model, const std::wstring& text);

}  // namespace corvath::analysis
