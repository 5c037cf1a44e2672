#include "exchange/c_declarations.h"

#include "exchange/c_text.h"
#include "exchange/model_reader.h"
#include "exchange/number_text.h"
#include "foundation/build_version.h"

#include <cmath>

namespace corvath::exchange {

namespace {

using std::to_string;

constexpr const char* kLargest = "1.7976931348623157e+308";
/// What every compiler takes as one string.
constexpr std::size_t kMaxString = 4000;

class DeclarationWriter {
 public:
  DeclarationWriter(const ProjectDescription& project, const CNames& names)
      : project_(project), names_(names) {}

  std::string Comment() const {
    std::string text = "/* Models of the project " + ShownName(project_.name) +
                       " in C99, written by zelsolver " + utils::GetBuildVersion().text + ".\n" +
                       (project_.signature.empty() ? "" : " * SHA-512 of the project:\n * ") +
                       project_.signature.substr(0, 64) +
                       (project_.signature.empty() ? "" : "\n * ") +
                       (project_.signature.empty() ? "" : project_.signature.substr(64)) + "\n *\n";
    text +=
        " * Nothing is allocated, nothing is kept, nothing is printed: threads may call at once. "
        "With\n * " +
        names_.GetUpper() + "_DECLARATIONS defined this file only declares, as a header.\n *\n";
    for (std::size_t i = 0; i < NumInputs(); ++i) {
      const InputDescription& input = project_.inputs[i];
      text += " * inputs[" + to_string(i) + "]: " + ShownName(input.name);
      if (!input.unit.empty()) text += ", in " + ShownName(input.unit);
      if (std::isfinite(input.lower) && std::isfinite(input.upper))
        text += ", " + NumberText(input.lower) + " to " + NumberText(input.upper);
      text += '\n';
    }
    for (std::size_t k = 0; k < project_.responses.size(); ++k)
      text += " * outputs[" + to_string(k) + "]: " + ShownName(project_.responses[k].name) + ", " +
              CommentText(project_.responses[k].model_name) + '\n';
    for (std::size_t c = 0; c < project_.criteria.size(); ++c)
      text += " * criteria[" + to_string(c) + "]: " + ShownName(project_.criteria[c].name) +
              (project_.criteria[c].is_limit ? ", a limit, kept when not negative" : "") + '\n';
    for (const LeftOut& entry : project_.criteria_left_out)
      text += " * Not here: the criterion " + ShownName(entry.name) + ": " +
              CommentText(entry.reason) + '\n';
    return text + " */\n\n";
  }

  std::string Declarations() const {
    const std::string guard = names_.GetUpper() + "_DECLARED";
    std::string text =
        "#ifndef " + guard + "\n#define " + guard + "\n\nenum {\n  " + names_.GetUpper() +
        "_NUM_INPUTS = " + to_string(NumInputs()) + ",\n  " + names_.GetUpper() +
        "_NUM_OUTPUTS = " + to_string(project_.responses.size()) + ",\n  " + names_.GetUpper() +
        "_NUM_CRITERIA = " + to_string(project_.criteria.size()) + "\n};\n\n";
    text += "#ifdef __cplusplus\nextern \"C\" {\n#endif\n\n";
    text +=
        "/* Names, UTF-8, and the range of the designs; without range -DBL_MAX to DBL_MAX. */\n";
    const auto declare_names = [&](const char* what, std::size_t n) {
      if (n > 0)
        text += "extern const char *const " + CNames::Array(names_.Own(what) + "_names", n) + ";\n";
    };
    declare_names("input", NumInputs());
    declare_names("output", project_.responses.size());
    declare_names("criterion", project_.criteria.size());
    for (const char* bound : {"lower", "upper"})
      text += "extern const double " + CNames::Array(names_.Own(bound), NumInputs()) + ";\n";
    text +=
        "\n/* 1 if all inputs are in the range of the designs, else 0. Elsewhere predictions\n"
        "   extrapolate. */\nint " +
        names_.Own("in_range") + "(" + names_.Inputs() + ");\n\n/* All responses. */\nvoid " +
        names_.Own("predict") + "(" + names_.Inputs() + ", " + names_.NewOutputs() +
        ");\n\n/* One response each; then its derivatives by the inputs, central differences\n"
        "   over 1e-4 of the range of the designs to each side. */\n";
    for (std::size_t k = 0; k < project_.responses.size(); ++k) {
      text += "double " + names_.Predict(k) + '(' + names_.Inputs() + ");\n";
      if (!project_.responses[k].gradient_steps.empty())
        text += "void " + names_.Gradient(k) + '(' + names_.Inputs() + ", " + names_.NewGradient() +
                ");\n";
    }
    if (!project_.criteria.empty()) {
      text += "\n/* The criteria, from the inputs and what they predict: all, and each. */\nvoid " +
              names_.Own("criteria") + '(' + names_.Inputs() + ", " + names_.Outputs() + ",\n    " +
              names_.NewCriteria() + ");\n";
      for (std::size_t c = 0; c < project_.criteria.size(); ++c)
        text += "double " + names_.Criterion(c) + '(' + names_.Inputs() + ", " + names_.Outputs() +
                ");\n";
    }
    return text + "\n#ifdef __cplusplus\n}\n#endif\n\n#endif /* " + guard + " */\n\n";
  }

  std::string Tables() const {
    std::string text = Names("input", project_.inputs) + Names("output", project_.responses) +
                       Names("criterion", project_.criteria);
    for (const bool is_lower : {true, false}) {
      text += "const double " +
              CNames::Array(names_.Own(is_lower ? "lower" : "upper"), NumInputs()) + " = {\n";
      for (std::size_t i = 0; i < NumInputs(); ++i) {
        const double bound = is_lower ? project_.inputs[i].lower : project_.inputs[i].upper;
        text += "  " +
                (std::isfinite(bound) ? RealText(bound)
                                      : (is_lower ? "-" : "") + std::string(kLargest)) +
                (i + 1 < NumInputs() ? ",\n" : "\n");
      }
      text += "};\n";
    }
    return text + "\nint " + names_.Own("in_range") + "(" + names_.Inputs() +
           ")\n{\n  int j;\n  for (j = 0; j < " + names_.GetUpper() +
           "_NUM_INPUTS; ++j)\n    if (inputs[j] < " + names_.Own("lower") +
           "[j] - 1e-8 || inputs[j] > " + names_.Own("upper") +
           "[j] + 1e-8)\n      return 0;\n  return 1;\n}\n\n";
  }

 private:
  template <class Entries>
  std::string Names(const char* what, const Entries& entries) const {
    if (entries.empty()) return {};
    std::string text = "const char *const " +
                       CNames::Array(names_.Own(what) + "_names", entries.size()) + " = {\n";
    for (std::size_t i = 0; i < entries.size(); ++i) {
      const std::string literal = CString(entries[i].name);
      if (literal.size() > kMaxString)
        throw NotDescribable("a name is longer than a string of C: " + ShownName(entries[i].name));
      text += "  " + literal + (i + 1 < entries.size() ? ",\n" : "\n");
    }
    return text + "};\n";
  }

  std::size_t NumInputs() const { return project_.inputs.size(); }

  const ProjectDescription& project_;
  const CNames& names_;
};

}  // namespace

std::string CHead(const ProjectDescription& project, const CNames& names) {
  const DeclarationWriter writer(project, names);
  return writer.Comment() + writer.Declarations();
}

std::string CTables(const ProjectDescription& project, const CNames& names) {
  return DeclarationWriter(project, names).Tables();
}

}  // namespace corvath::exchange
