#include "exchange/c_names.h"

#include <utility>

namespace corvath::exchange {

namespace {

std::string Upper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

}  // namespace

CNames::CNames(const ProjectDescription& project, std::string prefix)
    : prefix_(std::move(prefix)),
      upper_(Upper(prefix_)),
      num_inputs_(project.inputs.size()),
      ids_(IdentifiersOf(project)) {}

std::string CNames::Table(std::string_view what, std::size_t k) const {
  return Own(what) + '_' + std::to_string(k);
}

std::string CNames::Array(const std::string& name, std::size_t n) {
  return name + '[' + std::to_string(n) + ']';
}

std::string CNames::Replaced(std::string_view text) const {
  std::string replaced;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '@') {
      replaced += text[i];
    } else if (i + 1 < text.size() && text[i + 1] == '@') {
      replaced += upper_;
      ++i;
    } else {
      replaced += prefix_;
    }
  }
  return replaced;
}

}  // namespace corvath::exchange
