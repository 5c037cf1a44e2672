#pragma once

#include "study/describe/candidate_list.h"
#include "study/project/project.h"
#include "study/result.h"

#include <json/json.h>

#include <string>
#include <vector>

namespace corvath::study {

/// What a project holds, as JSON: see zelstudy_describe().
/// @param with_candidates  the models that competed, too
/// @param with_formulas    the models in full, too
Json::Value ProjectDocument(const Project& project, bool with_candidates, bool with_formulas);

/// The arrays that zelstudy_describe() gives beside it.
void AddProjectArrays(const Project& project, Result& result);

/// The unit of an input; empty for none.
std::string InputUnit(const Project& project, const std::string& input);

/// The model of an output; null if there is none.
const math::metamodel::SurrogateBase* FindModel(const Project& project, const std::string& output);

/// The models that competed for an output; empty if the project does not tell.
std::vector<Candidate> CandidatesOf(const Project& project, const std::string& output);

}  // namespace corvath::study
