#include "exchange/identifiers.h"

namespace corvath::exchange {

namespace {

constexpr std::size_t kMaxLength = 48;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c);
}

std::string Plain(std::string_view name) {
  std::string plain;
  bool gap = false;
  for (const char c : name) {
    if (!IsPlain(c)) {
      gap = true;
      continue;
    }
    if (gap && !plain.empty()) plain += '_';
    gap = false;
    plain += c;
    if (plain.size() >= kMaxLength) break;
  }
  return plain.empty() ? "x" : plain;
}

}  // namespace

std::string Identifiers::Make(std::string_view name) {
  const std::string plain = Plain(name);
  std::string identifier = plain;
  std::size_t& number = next_.emplace(plain, 2).first->second;
  while (!taken_.insert(identifier).second) identifier = plain + '_' + std::to_string(number++);
  return identifier;
}

ProjectIdentifiers IdentifiersOf(const ProjectDescription& project) {
  ProjectIdentifiers result;
  Identifiers responses;
  for (const auto& response : project.responses)
    result.responses.push_back(responses.Make(response.name));
  Identifiers criteria({"names"});  // criterion_names is the table of names
  for (const auto& criterion : project.criteria)
    result.criteria.push_back(criteria.Make(criterion.name));
  return result;
}

std::string PrefixOf(std::string_view name) {
  const std::string plain = Plain(name);
  return IsDigit(plain.front()) ? "m_" + plain : plain;
}

}  // namespace corvath::exchange
