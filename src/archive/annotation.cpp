#include "archive/annotation.h"

#include <link.h>

#include <algorithm>

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

struct Segment {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
};

/// The part of this library that holds its literals, which nothing writes to.
Segment FindLiterals() {
  Segment found;
  dl_iterate_phdr(
      [](dl_phdr_info* module, std::size_t, void* result) {
        const auto table = reinterpret_cast<std::uintptr_t>(kTable.data());
        for (ElfW(Half) k = 0; k < module->dlpi_phnum; ++k) {
          const ElfW(Phdr)& header = module->dlpi_phdr[k];
          const std::uintptr_t begin = module->dlpi_addr + header.p_vaddr;
          const std::uintptr_t end = begin + header.p_memsz;
          if (header.p_type != PT_LOAD || (header.p_flags & PF_W) != 0) continue;
          if (table < begin || table >= end) continue;
          *static_cast<Segment*>(result) = {begin, end};
          return 1;
        }
        return 0;
      },
      &found);
  return found;
}

bool IsLiteral(const char* text) {
  static const Segment literals = FindLiterals();
  const auto address = reinterpret_cast<std::uintptr_t>(text);
  return address >= literals.begin && address < literals.end;
}

}  // namespace

std::uint16_t AnnotationChecksum(std::string_view name) {
  unsigned crc = 0;
  for (const char c : name) crc = (crc >> 8) ^ kTable[(crc ^ static_cast<unsigned char>(c)) & 0xff];
  return static_cast<std::uint16_t>(crc);
}

AnnotationNames::Name& AnnotationNames::Find(const char* name) {
  const auto address = reinterpret_cast<std::uintptr_t>(name);
  Name& recent = recent_[(address ^ (address >> 8)) % recent_.size()];
  if (recent.address != name || (!recent.is_literal && recent.text != name))
    recent = {name, name, AnnotationChecksum(name), IsLiteral(name), false};
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
