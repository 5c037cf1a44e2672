#include "commands.h"
#include "foundation/text.h"
#include "interruption.h"
#include "progress_line.h"
#include "standard_output.h"
#include "study/describe/candidate_list.h"
#include "study/describe/json_text.h"
#include "study/describe/model_text.h"
#include "study/describe/text_table.h"
#include "study/table/criteria_texts.h"
#include "study/table/criterion_names.h"
#include "study/table/design_table.h"
#include "training/train_study.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <sstream>

namespace cli {
namespace {

using corvath::training::TrainedResponse;
using corvath::training::TrainedStudy;
using corvath::utils::ToUtf8;

/// "study.vrdb" beside "study.csv".
std::string DefaultOutput(const std::string& table) {
  if (table == "-") throw Refusal("-o: a table from standard input gives the project no name");
  const std::size_t name = table.find_last_of('/') + 1;  // 0 without a folder
  const std::size_t dot = table.find_last_of('.');
  const bool has_extension = dot != std::string::npos && dot > name;
  return table.substr(0, has_extension ? dot : table.size()) + ".vrdb";
}

/// Where the project goes, made sure of before the long work. A file that only the default names is
/// not replaced: nobody asked for that.
std::string RequireOutput(const TrainOptions& options) {
  const std::string path = options.out.empty() ? DefaultOutput(options.table) : options.out;
  if (path == "-") throw Refusal("-o: a project is no text; give it a file name");
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) {
    if (S_ISDIR(status.st_mode)) throw Refusal(path + ": is a directory");
    if (!S_ISREG(status.st_mode)) throw Refusal(path + ": is no regular file");
    struct stat table {};
    if (stat(options.table.c_str(), &table) == 0 && table.st_dev == status.st_dev &&
        table.st_ino == status.st_ino)
      throw Refusal(path + ": is the table itself");
    if (options.out.empty()) throw Refusal(path + ": exists already; -o " + path + " replaces it");
  }
  const std::size_t slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  if (access(folder.c_str(), W_OK | X_OK) != 0) throw Refusal(path + ": " + std::strerror(errno));
  return path;
}

/// Puts what the numbers do not tell about the columns into the project: units, words, dates.
void TellColumns(const DesignTable& table, corvath::algorithm::datatypes::VRDB& project) {
  table.columns.Store(project);
  auto& manager = project.GetParameterManager();
  for (const auto& [name, unit] : table.units) {
    const auto* const found = manager.FindParameter(corvath::utils::FromUtf8(name));
    if (found == nullptr) continue;  // of a response
    auto parameter = *found;
    parameter.SetUnit(corvath::utils::FromUtf8(unit));
    manager.ReplaceParameter(parameter);
  }
}

TrainedStudy Train(const TrainOptions& options, const std::vector<std::string>& criterion_texts,
                   const DesignTable& table) {
  corvath::training::TrainSettings settings;
  settings.seed = options.seed;
  settings.budget_seconds = options.budget;
  const auto criteria = ParseCriteria(criterion_texts, table.data);
  std::ostringstream seconds;
  seconds << options.budget;
  const std::string budget = seconds.str();
  ProgressLine progress(!options.quiet);
  const auto observer = [&](const corvath::training::TrainProgress& state) {
    const double share = state.total == 0
                             ? -1.0
                             : static_cast<double>(state.done) / static_cast<double>(state.total);
    progress.Update(ToUtf8(state.response + L": " + state.candidate) + " (budget " + budget + " s)",
                    share);
    return true;
  };
  try {
    return corvath::training::TrainStudy(table.data, settings, criteria, observer);
  } catch (const corvath::training::TrainingError& error) {
    throw Refusal(table.Explain(error));
  }
}

/// The inputs of a model as model_text.h takes them.
struct ModelInputs {
  ModelInputs(const TrainedResponse& response, const std::vector<std::wstring>& all) {
    for (std::size_t i = 0; i < all.size(); ++i) {
      names.push_back(ToUtf8(all[i]));
      filtered.push_back(std::find(response.inputs.begin(), response.inputs.end(), all[i]) ==
                         response.inputs.end());
      cops.push_back(response.single_cops(static_cast<Eigen::Index>(i)));
    }
  }

  std::vector<std::string> names;
  std::vector<bool> filtered;
  std::vector<double> cops;
};

/// What the user should know: notes of the table, of the training, and on single CoPs.
std::vector<std::string> CollectNotes(const TrainedStudy& study, const DesignTable& table) {
  std::vector<std::string> notes;
  for (const std::wstring& note : study.notes) notes.push_back(ToUtf8(note));
  std::vector<std::string> losses;
  for (const TrainedResponse& response : study.responses) {
    const ModelInputs inputs(response, table.data.inputs);
    std::string text = LargeLosses(ToUtf8(response.name), response.cop, inputs.names,
                                   inputs.filtered, inputs.cops);
    if (!text.empty()) losses.push_back(std::move(text));
  }
  if (!losses.empty()) notes.push_back(LargeLossNote(losses));
  return notes;
}

std::string Summary(const TrainedStudy& study, const DesignTable& table, const std::string& path) {
  TextTable summary;
  summary.AddColumn("response", TextTable::Align::kLeft);
  summary.AddColumn("CoP", TextTable::Align::kRight);
  summary.AddColumn("raw", TextTable::Align::kRight);
  summary.AddColumn("designs", TextTable::Align::kRight);
  summary.AddColumn("model", TextTable::Align::kLeft);
  summary.AddColumn("inputs that it uses, with the loss of CoP without each",
                    TextTable::Align::kLeft);
  for (const TrainedResponse& response : study.responses) {
    const ModelInputs inputs(response, table.data.inputs);
    summary.AddRow({ToUtf8(response.name), CoPText(response.cop, 4), CoPText(response.cop_raw, 4),
                    std::to_string(response.num_designs), ToUtf8(response.model),
                    UsedInputs(inputs.names, inputs.filtered, inputs.cops)});
  }
  std::ostringstream text;
  summary.Print(text, "");
  for (const std::string& note : CollectNotes(study, table)) text << note << '\n';
  text << "Wrote " << path << '\n';
  return text.str();
}

Json::Value ResponseJson(const TrainedResponse& response, const TrainedStudy& study,
                         const DesignTable& table) {
  const ModelInputs inputs(response, table.data.inputs);
  Json::Value json;
  json["name"] = ToUtf8(response.name);
  json["model"] = ToUtf8(response.model);
  json["cop"] = JsonNumber(response.cop);
  json["raw_cop"] = JsonNumber(response.cop_raw);
  json["noise"] = JsonNumber(response.noise);
  json["cod"] = JsonNumber(response.cod);
  json["cod_adjusted"] = JsonNumber(response.cod_adjusted);
  json["designs"] = static_cast<Json::UInt64>(response.num_designs);
  json["inputs"] = Json::Value(Json::arrayValue);
  for (std::size_t i = 0; i < inputs.names.size(); ++i) {
    if (inputs.filtered[i]) continue;
    Json::Value input;
    input["name"] = inputs.names[i];
    input["single_cop"] = JsonNumber(inputs.cops[i]);
    json["inputs"].append(input);
  }
  json["candidates"] = CandidatesJson(
      ListCandidates(*study.project.GetAlgorithmInfo()->GetZELInformation(), response.name));
  return json;
}

/// What the summary and the notes tell, and the candidates.
Json::Value Document(const TrainedStudy& study, const DesignTable& table, const std::string& path) {
  Json::Value document;
  document["table"] = table.file;
  document["project"] = path;
  document["designs"] = static_cast<Json::UInt64>(table.rows.size());
  document["inputs"] = Json::Value(Json::arrayValue);
  for (const std::wstring& name : table.data.inputs) {
    const TableColumn* const column = table.columns.Find(ToUtf8(name));
    Json::Value input = column == nullptr ? Json::Value(Json::objectValue) : column->ToJson();
    input["name"] = ToUtf8(name);
    const auto unit = table.units.find(ToUtf8(name));
    if (unit != table.units.end()) input["unit"] = unit->second;
    document["inputs"].append(input);
  }
  document["responses"] = Json::Value(Json::arrayValue);
  for (const TrainedResponse& response : study.responses)
    document["responses"].append(ResponseJson(response, study, table));
  document["notes"] = Json::Value(Json::arrayValue);
  for (const std::string& note : table.notes) document["notes"].append(note);
  for (const std::string& note : CollectNotes(study, table)) document["notes"].append(note);
  return document;
}

}  // namespace

void RunTrain(const TrainOptions& options) {
  ClaimStandardOutput();  // before the library logs what it meets
  ColumnChoice choice;
  choice.inputs = ParseNames(options.inputs, "--inputs");
  choice.responses = ParseNames(options.responses, "--responses");
  choice.discrete = ParseNames(options.discrete, "--discrete");
  choice.dates = ParseNames(options.dates, "--dates");
  choice.ignored = ParseNames(options.ignored, "--ignore");
  const std::string path = RequireOutput(options);
  DesignTable table = ReadDesignTable(options.table, choice, options.skip_incomplete);
  const auto criteria = UseColumns(options.criteria, table);
  if (!options.quiet && !options.json)
    for (const std::string& note : table.notes) std::cerr << "zel: " << note << '\n';
  TrainedStudy study = Train(options, criteria, table);
  TellColumns(table, study.project);
  {
    // Half of a file under a temporary name would stay.
    const InterruptionDelay delay;
    corvath::training::WriteStudy(study, path);
  }
  if (options.json)
    PrintResult(JsonText(Document(study, table, path)));
  else if (!options.quiet)
    PrintResult(Summary(study, table, path));
}

}  // namespace cli
