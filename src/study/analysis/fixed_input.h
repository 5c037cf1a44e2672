#pragma once

#include "analysis/study_model.h"
#include "study/project/project.h"

#include <string>
#include <utility>

namespace corvath::study {

/// The name and the value of "NAME=VALUE", where a word or a date may stand for its number.
/// @throws Refusal  another text, an unknown input, no finite number, or one that a discrete input
///                  does not take
std::pair<std::string, double> ParseFixed(const Project& project, const analysis::StudyModel& model,
                                          const std::string& text);

}  // namespace corvath::study
