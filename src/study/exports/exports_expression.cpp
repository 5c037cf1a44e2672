#include "study/exports/call_frame.h"
#include "study/exports/handles.h"
#include "study/expression/evaluate.h"
#include "study/expression/language.h"
#include "study/options.h"

namespace api = corvath::study::api;
namespace study = corvath::study;

int zelstudy_evaluate(const char* expression, const char* definitions, zelstudy_result** out) {
  return api::CallFor(out, [&] {
    const std::string text = &api::Require(expression, "expression");
    std::vector<study::Definition> meanings;
    if (definitions != nullptr && *definitions != '\0')
      meanings = study::DefinitionsOf(study::ParseJson(definitions, "definitions"));
    return api::MakeResult(study::ValueResult(study::Evaluate(text, meanings)));
  });
}

int zelstudy_functions(zelstudy_result** out) {
  return api::CallFor(out, [] { return api::MakeResult(study::FunctionsDocument()); });
}

int zelstudy_help(const char* name, zelstudy_result** out) {
  return api::CallFor(
      out, [&] { return api::MakeResult(study::HelpDocument(&api::Require(name, "name"))); });
}

int zelstudy_macros(zelstudy_result** out) {
  return api::CallFor(out, [] { return api::MakeResult(study::MacrosDocument()); });
}
