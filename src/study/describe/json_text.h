#pragma once

#include <json/json.h>

#include <string>

namespace corvath::study {

/// A number that reads back exactly; null for what is not finite, which JSON does not have.
Json::Value JsonNumber(double value);

/// UTF-8 text of a document, with a line end.
std::string JsonText(const Json::Value& document);

}  // namespace corvath::study
