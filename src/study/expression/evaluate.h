#pragma once

#include "study/result.h"
#include "variant/value/variant.h"

#include <json/json.h>

#include <string>
#include <variant>
#include <vector>

namespace corvath::study {

/// A name with a meaning for one evaluation: an expression, or a value.
struct Definition {
  std::string name;
  std::variant<std::string, math::Value> meaning;
};

/// The value of an expression; the user's macros count.
/// @param definitions  in any order
/// @throws Refusal  a text is no expression, a name is none, or what they mean fails
math::Value Evaluate(const std::string& expression, const std::vector<Definition>& definitions);

/// A value as a terminal shows it: its kind, then its numbers; with a line end.
std::string ValueText(const math::Value& value);
/// See zelstudy_evaluate().
Result ValueResult(const math::Value& value);

/// The definitions of a JSON object, see zelstudy_evaluate(). @throws Refusal
std::vector<Definition> DefinitionsOf(const Json::Value& object);

}  // namespace corvath::study
