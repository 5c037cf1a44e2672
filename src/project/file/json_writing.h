#pragma once

#include "foundation/text_stream.h"

#include <json/writer.h>

#include <memory>
#include <string>

namespace corvath::algorithm::datatypes {

/// As Json::writeString, which cuts the text short where memory runs out.
inline std::string WriteJson(const Json::StreamWriter::Factory& factory,
                             const Json::Value& document) {
  utils::TextStream stream;
  const std::unique_ptr<Json::StreamWriter> writer(factory.newStreamWriter());
  writer->write(document, &stream);
  return stream.str();
}

}  // namespace corvath::algorithm::datatypes
