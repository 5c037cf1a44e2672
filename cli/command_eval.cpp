#include "calculator/calculator.h"
#include "calculator/macro_file.h"
#include "commands.h"
#include "foundation/text.h"
#include "standard_output.h"

#include <sstream>

namespace cli {

namespace {

using corvath::utils::FromUtf8;
using corvath::utils::ToUtf8;

/// Makes an object of "NAME=EXPRESSION".
void Set(CCalculator& calculator, const std::string& definition) {
  const std::size_t equals = definition.find('=');
  if (equals == std::string::npos)
    throw Refusal("--set " + definition + ": expected NAME=EXPRESSION");
  const std::wstring expression = FromUtf8(definition.substr(equals + 1));
  calculator.GetDependencies(expression);  // is it an expression?
  calculator.SetObject(FromUtf8(definition.substr(0, equals)), expression, {});
}

}  // namespace

void RunEval(const std::string& expression, const std::vector<std::string>& definitions) {
  std::wostringstream text;
  try {
    CCalculator calculator;
    calculator.AddMacros(corvath::calculator::LoadMacros());
    for (const std::string& definition : definitions) Set(calculator, definition);
    text << calculator.Evaluate(FromUtf8(expression));
  } catch (const Refusal&) {
    throw;
  } catch (const std::exception& error) {
    throw Refusal(ToUtf8(corvath::utils::MessageOf(error)));
  }
  std::string result = ToUtf8(text.str());
  if (result.back() != '\n') result += '\n';
  PrintResult(result);
}

}  // namespace cli
