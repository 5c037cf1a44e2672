#include "exchange/export_project.h"

#include "exchange/identifiers.h"
#include "exchange/model_reader.h"
#include "exchange/write_c.h"
#include "exchange/write_json.h"
#include "exchange/write_python.h"

namespace corvath::exchange {

const std::vector<std::string>& ExportFormats() {
  static const std::vector<std::string> formats = {"json", "c", "python"};
  return formats;
}

Export ExportProject(const ProjectDescription& project, const std::string& format,
                     const std::string& name) {
  for (const LeftOut& response : project.responses_left_out)
    throw NotDescribable("response \"" + response.name +
                         "\" cannot be exported: " + response.reason);
  if (format != "json") {
    if (project.inputs.empty()) throw NotDescribable("the project has no inputs");
    if (project.responses.empty()) throw NotDescribable("the project has no response to predict");
  }
  Export result;
  if (format == "json")
    result.text = WriteJson(project);
  else if (format == "c")
    result.text = WriteC(project, PrefixOf(name.empty() ? project.name : name));
  else if (format == "python")
    result.text = WritePython(project);
  else
    throw NotDescribable("no export format \"" + format + '"');
  for (const LeftOut& criterion : project.criteria_left_out)
    result.warnings.push_back("criterion \"" + criterion.name +
                              "\" is left out: " + criterion.reason);
  return result;
}

}  // namespace corvath::exchange
