#pragma once

#include <charconv>
#include <string>

namespace corvath::exchange {

/// The shortest text that reads back as the same number: "0.1", "1e-07". Finite numbers alone.
inline std::string NumberText(double number) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

/// The same as C and Python read a floating-point number: "2.0".
inline std::string RealText(double number) {
  std::string text = NumberText(number);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

}  // namespace corvath::exchange
