#include "foundation/exception.h"

#include "foundation/text.h"

#include <cwchar>
#include <locale>

namespace corvath::utils {

exception::~exception() = default;

std::string NarrowForWhat(const std::wstring& message) {
  using Facet = std::codecvt<wchar_t, char, std::mbstate_t>;
  const std::locale locale;
  const Facet& facet = std::use_facet<Facet>(locale);
  std::string narrow;
  for (const wchar_t& c : message) {
    std::mbstate_t state{};
    char bytes[16];
    const wchar_t* from = nullptr;
    char* to = nullptr;
    const auto result = facet.out(state, &c, &c + 1, from, bytes, bytes + sizeof bytes, to);
    if (result == std::codecvt_base::ok && to != bytes)
      narrow.append(bytes, to);
    else
      narrow += '?';
  }
  return narrow;
}

std::wstring MessageOf(const std::exception& error) {
  const auto* const wide = dynamic_cast<const utils::exception*>(&error);
  return wide != nullptr ? wide->GetMessage() : FromUtf8(error.what());
}

}  // namespace corvath::utils
