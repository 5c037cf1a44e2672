#include "commands.h"
#include "standard_output.h"
#include "study/expression/language.h"

namespace cli {

void RunHelp(const std::string& function) {
  PrintResult(HelpText(function));
}

}  // namespace cli
