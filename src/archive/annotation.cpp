#include "archive/annotation.h"

#include <algorithm>
#include <cstring>

namespace corvath::archive {
namespace {

constexpr std::array<std::uint16_t, 256> MakeTable() {
  std::array<std::uint16_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? (crc >> 1) ^ 0x8408 : crc >> 1;
    table[byte] = static_cast<std::uint16_t>(crc);
  }
  return table;
}

constexpr auto kTable = MakeTable();

}  // namespace

std::uint16_t AnnotationChecksum(std::string_view name) {
  unsigned crc = 0;
  for (const char c : name) crc = (crc >> 8) ^ kTable[(crc ^ static_cast<unsigned char>(c)) & 0xff];
  return static_cast<std::uint16_t>(crc);
}

AnnotationNames::Name& AnnotationNames::Find(const char* name) {
  const auto address = reinterpret_cast<std::uintptr_t>(name);
  Name& recent = recent_[(address ^ (address >> 8)) % recent_.size()];
  if (recent.address != name || std::strcmp(recent.text.c_str(), name) != 0)
    recent = {name, name, AnnotationChecksum(name), false};
  return recent;
}

void AnnotationNames::Note(Name& name) {
  if (name.is_noted) return;
  name.is_noted = true;
  auto& names = names_[name.checksum];
  if (std::find(names.begin(), names.end(), name.text) == names.end()) names.push_back(name.text);
}

std::string AnnotationNames::CouldBe(std::uint16_t checksum) const {
  const auto found = names_.find(checksum);
  if (found == names_.end()) return "";
  std::string text = " (could be: ";
  for (const auto& name : found->second) {
    if (&name != &found->second.front()) text += ", ";
    text += '"' + name + '"';
  }
  return text + ")";
}

}  // namespace corvath::archive
