#include "exchange/write_c.h"

#include "exchange/c_criteria.h"
#include "exchange/c_declarations.h"
#include "exchange/c_helpers.h"
#include "exchange/c_model.h"
#include "exchange/c_names.h"

#include <set>

namespace corvath::exchange {

namespace {

/// Fused operations would round where the library does not. ISO modes of gcc have none; what
/// others do not know of these lines they would warn of.
constexpr const char* kNothingFused = R"(#if defined(__clang__)
#pragma STDC FP_CONTRACT OFF
#elif defined(__GNUC__) && !defined(__TINYC__)
#pragma GCC optimize("-ffp-contract=off")
#endif

)";

std::string PredictAll(const ProjectDescription& project, const CNames& names) {
  std::string text =
      "void " + names.Own("predict") + '(' + names.Inputs() + ", " + names.NewOutputs() + ")\n{\n";
  for (std::size_t k = 0; k < project.responses.size(); ++k)
    text += "  " + CNames::Array("outputs", k) + " = " + names.Predict(k) + "(inputs);\n";
  return text + "}\n\n";
}

}  // namespace

std::string WriteC(const ProjectDescription& project, const std::string& prefix) {
  const CNames names(project, prefix);
  std::set<std::string> needed;
  std::string functions;
  for (std::size_t k = 0; k < project.responses.size(); ++k)
    functions += CModel(project, k, names, needed);
  functions += PredictAll(project, names) + CCriteria(project, names, needed);
  std::string text = CHead(project, names) + "#ifndef " + names.GetUpper() +
                     "_DECLARATIONS\n\n#include <math.h>\n\n" + kNothingFused +
                     CTables(project, names);
  for (const CHelper& helper : kCHelpers)
    if (needed.count(helper.name) > 0) text += names.Replaced(helper.text) + '\n';
  return text + functions + "#endif /* " + names.GetUpper() + "_DECLARATIONS */\n";
}

}  // namespace corvath::exchange
