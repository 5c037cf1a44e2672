#include "study/describe/json_text.h"

#include "project/file/json_writing.h"

#include <cmath>

namespace corvath::study {

Json::Value JsonNumber(double value) {
  return std::isfinite(value) ? Json::Value(value) : Json::Value();
}

std::string JsonText(const Json::Value& document) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "  ";
  builder["precision"] = 17;
  builder["emitUTF8"] = true;
  return algorithm::datatypes::WriteJson(builder, document) + '\n';
}

}  // namespace corvath::study
