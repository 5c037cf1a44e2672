#pragma once

#include <string_view>

namespace corvath::report {

/// The fixed parts of the page, from the files in src/report/page/; the build embeds them.
std::string_view PageBody();
std::string_view PageStyle();
std::string_view PageScript();

}  // namespace corvath::report
