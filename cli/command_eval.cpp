#include "commands.h"
#include "standard_output.h"
#include "study/expression/evaluate.h"

namespace cli {

void RunEval(const std::string& expression, const std::vector<std::string>& definitions) {
  std::vector<Definition> meanings;
  for (const std::string& definition : definitions) {
    const std::size_t equals = definition.find('=');
    if (equals == std::string::npos)
      throw Refusal("--set " + definition + ": expected NAME=EXPRESSION");
    meanings.push_back({definition.substr(0, equals), definition.substr(equals + 1)});
  }
  PrintResult(ValueText(Evaluate(expression, meanings)));
}

}  // namespace cli
