#pragma once

#include <string_view>

namespace corvath::report {

/// The fixed parts of the page, from the files in src/report/page/; the build embeds them.
std::string_view PageBody();
std::string_view PageStyle();
std::string_view PageScript();

/// The modules of d3, and their licences as plain text.
std::string_view DrawingScript();
std::string_view DrawingLicences();

}  // namespace corvath::report
