#include "exchange/json_writer.h"

#include "exchange/number_text.h"

#include <cmath>

namespace corvath::exchange {

void JsonWriter::Separate() {
  if (after_key_) {
    after_key_ = false;
    return;
  }
  if (!first_) text_ += ',';
  if (line_) text_ += '\n';
  first_ = line_ = false;
}

void JsonWriter::Open(char bracket) {
  Separate();
  text_ += bracket;
  first_ = true;
}

void JsonWriter::Close(char bracket) {
  if (line_) text_ += '\n';
  text_ += bracket;
  first_ = line_ = false;
}

void JsonWriter::AppendText(std::string_view utf8) {
  static constexpr char kDigits[] = "0123456789abcdef";
  text_ += '"';
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const char c = utf8[i];
    const auto code = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      text_ += '\\';
      text_ += c;
    } else if (code < 0x20 || code == 0x7f || c == '<' || c == '>' || c == '&') {
      text_ += "\\u00";
      text_ += kDigits[code >> 4];
      text_ += kDigits[code & 15];
    } else if (utf8.compare(i, 3, "\xe2\x80\xa8") == 0 || utf8.compare(i, 3, "\xe2\x80\xa9") == 0) {
      text_ += utf8[i + 2] == '\xa8' ? "\\u2028" : "\\u2029";  // line ends to old scripts
      i += 2;
    } else {
      text_ += c;
    }
  }
  text_ += '"';
}

void JsonWriter::Key(std::string_view name) {
  Separate();
  AppendText(name);
  text_ += ':';
  after_key_ = true;
}

void JsonWriter::Text(std::string_view utf8) {
  Separate();
  AppendText(utf8);
}

void JsonWriter::Number(double number) {
  if (!std::isfinite(number)) return Null();
  Separate();
  text_ += NumberText(number);
}

void JsonWriter::Count(std::size_t count) {
  Separate();
  text_ += std::to_string(count);
}

void JsonWriter::Truth(bool truth) {
  Separate();
  text_ += truth ? "true" : "false";
}

void JsonWriter::Null() {
  Separate();
  text_ += "null";
}

void JsonWriter::Document(std::string_view json) {
  Separate();
  for (const char c : json) {  // the three stand in texts alone
    if (c == '<')
      text_ += "\\u003c";
    else if (c == '>')
      text_ += "\\u003e";
    else if (c == '&')
      text_ += "\\u0026";
    else
      text_ += c;
  }
}

void JsonWriter::Numbers(std::string_view key, const std::vector<double>& numbers) {
  Key(key);
  BeginArray();
  for (const double number : numbers) Number(number);
  EndArray();
}

}  // namespace corvath::exchange
