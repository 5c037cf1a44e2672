#include "report/report.h"

#include "design/designs/indexed_responses.h"
#include "design/designs/input_columns.h"
#include "design/parameters/random_conversion.h"
#include "exchange/json_writer.h"
#include "exchange/model_reader.h"
#include "exchange/write_json.h"
#include "foundation/constants.h"
#include "foundation/text.h"
#include "foundation/text_stream.h"
#include "project/records/detailed_information.h"
#include "report/page_parts.h"
#include "solver/zel_solver.h"
#include "stochastics/random_variable.h"

#include <cryptopp/base64.h>
#include <cryptopp/filters.h>
#include <cryptopp/sha.h>

#include <cmath>
#include <new>
#include <unordered_map>
#include <utility>

namespace corvath::report {

namespace {

using algorithm::datatypes::Design;
using algorithm::datatypes::DesignManager;
using algorithm::datatypes::InputColumns;
using algorithm::datatypes::InputSide;
using algorithm::datatypes::SurrogateInfo;
using exchange::JsonWriter;
using utils::FromUtf8;
using utils::ToUtf8;
using zel::ZELSolver;

using math::kNaN;

std::string HtmlText(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '<')
      escaped += "&lt;";
    else if (c == '>')
      escaped += "&gt;";
    else if (c == '&')
      escaped += "&amp;";
    else if (c == '"')
      escaped += "&quot;";
    else
      escaped += c;
  }
  return escaped;
}

/// The source of a content security policy that admits this text alone.
std::string PolicySource(std::string_view text) {
  std::string base64;
  CryptoPP::SHA256 sha256;
  const CryptoPP::StringSource source(
      reinterpret_cast<const CryptoPP::byte*>(text.data()), text.size(), true,
      new CryptoPP::HashFilter(
          sha256, new CryptoPP::Base64Encoder(new CryptoPP::StringSink(base64), false)));
  return "'sha256-" + base64 + '\'';
}

std::string IdText(const algorithm::datatypes::DesignId& id) {
  utils::TextStream text;
  text << id.GetValue();
  for (const auto* next = id.GetNext(); next != nullptr; next = next->GetNext())
    text << '.' << next->GetValue();
  return text.str();
}

/// n x m; of a design that lacks an input, NaN.
Eigen::MatrixXd InputsOf(ZELSolver& solver) {
  const std::vector<Design>& designs = solver.GetProject().GetDesignContainer().GetDesigns();
  const auto side = solver.GetProject().GetSamplingType() ==
                            algorithm::datatypes::DetailedInformationBase::kStochasticSampling
                        ? InputSide::kRandom
                        : InputSide::kDeterministic;
  const InputColumns columns =
      InputColumns::Of(solver.GetProject().GetParameterManager(), solver.GetInputNames(), side);
  try {
    return columns.ToMatrix(designs);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    const auto m = static_cast<Eigen::Index>(columns.GetSize());
    Eigen::MatrixXd inputs =
        Eigen::MatrixXd::Constant(static_cast<Eigen::Index>(designs.size()), m, kNaN);
    for (std::size_t d = 0; d < designs.size(); ++d) try {
        inputs.row(static_cast<Eigen::Index>(d)) =
            columns.ToMatrix(std::vector<const Design*>{&designs[d]});
      } catch (const std::bad_alloc&) {
        throw;
      } catch (const std::exception&) {  // the row stays NaN
      }
    return inputs;
  }
}

void WriteColumn(const std::vector<double>& column, JsonWriter& json) {
  json.BeginArray();
  for (const double number : column) json.Number(number);
  json.EndArray();
}

/// Measured and cross-validated values of each response, one for each design.
class ResponseColumns {
 public:
  explicit ResponseColumns(ZELSolver& solver) : solver_(solver) {
    const auto& designs = solver.GetProject().GetDesignContainer().GetDesigns();
    for (std::size_t d = 0; d < designs.size(); ++d) rows_.emplace(IdText(designs[d].GetId()), d);
    const DesignManager& manager = solver.GetProject().GetDesignContainer();
    const auto widths = manager.GetModelResponseWidths();
    const auto names = DesignManager::GetResponseNames(widths);
    matrix_ = manager.GetResponseMatrix(widths);
    for (std::size_t i = 0; i < names.size(); ++i) columns_.emplace(names[i], i);
  }

  std::vector<double> Measured(const std::wstring& name) const {
    std::vector<double> values(static_cast<std::size_t>(matrix_.rows()), kNaN);
    const auto found = columns_.find(name);
    if (found == columns_.end()) return values;
    const auto column = matrix_.col(static_cast<Eigen::Index>(found->second));
    values.assign(column.begin(), column.end());
    return values;
  }

  /// NaN for a design that was no support point.
  std::vector<double> Predicted(const std::wstring& name) const {
    std::vector<double> values(static_cast<std::size_t>(matrix_.rows()), kNaN);
    const SurrogateInfo& info = solver_.GetSurrogateInfos().GetSurrogateInfo(name);
    const auto& surrogate = info.GetSurrogate();
    const auto& ids = info.GetUsedHids();
    const auto& residuals = surrogate->GetResiduals();
    const auto& support = surrogate->GetValues();
    if (residuals.size() != support.size() ||
        static_cast<std::size_t>(residuals.size()) != ids.size())
      return values;
    for (std::size_t i = 0; i < ids.size(); ++i) {
      const auto row = rows_.find(IdText(ids[i]));
      const auto at = static_cast<Eigen::Index>(i);
      if (row != rows_.end()) values[row->second] = support(at) - residuals(at);
    }
    return values;
  }

 private:
  ZELSolver& solver_;
  std::unordered_map<std::string, std::size_t> rows_;  ///< of the designs by id
  std::unordered_map<std::wstring, std::size_t> columns_;
  Eigen::MatrixXd matrix_;
};

void WriteDesigns(ZELSolver& solver, const exchange::ProjectDescription& project,
                  JsonWriter& json) {
  json.NewLine();
  json.Key("designs");
  json.BeginObject();
  json.Key("ids");
  json.BeginArray();
  for (const Design& design : solver.GetProject().GetDesignContainer().GetDesigns())
    json.Text(IdText(design.GetId()));
  json.EndArray();
  const Eigen::MatrixXd inputs = InputsOf(solver);
  json.Key("inputs");
  json.BeginArray();
  for (Eigen::Index j = 0; j < inputs.cols(); ++j) {
    const auto column = inputs.col(j);
    WriteColumn({column.begin(), column.end()}, json);
  }
  json.EndArray();
  const ResponseColumns columns(solver);
  for (const bool measured : {true, false}) {
    json.Key(measured ? "measured" : "predicted");
    json.BeginArray();
    for (const auto& response : project.responses) {
      const std::wstring name = FromUtf8(response.name);
      WriteColumn(measured ? columns.Measured(name) : columns.Predicted(name), json);
    }
    json.EndArray();
  }
  json.EndObject();
}

/// "NORMAL: Mean value 12, Standard deviation 0.6"; empty for an input that is not random.
std::string DistributionText(ZELSolver& solver, const std::string& input) {
  const auto* const parameter =
      solver.GetProject().GetParameterManager().FindParameter(FromUtf8(input));
  if (parameter == nullptr || !parameter->HasRandom()) return {};
  try {
    const auto variable = algorithm::datatypes::ParameterToRV(*parameter);
    const auto names = variable->GetMomentNames();
    const Eigen::VectorXd stats = variable->GetStats();
    utils::TextStream text;
    text << ToUtf8(variable->GetTypeName());
    for (std::size_t i = 0; i < names.size() && static_cast<Eigen::Index>(i) < stats.size(); ++i)
      text << (i == 0 ? ": " : ", ") << ToUtf8(names[i]) << ' '
           << stats(static_cast<Eigen::Index>(i));
    return text.str();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    return error.what();
  }
}

void WriteTexts(const std::vector<std::string>& texts, JsonWriter& json) {
  json.BeginArray();
  for (const std::string& text : texts) json.Text(text);
  json.EndArray();
}

void WriteCompetitors(const std::vector<std::vector<Competitor>>& competitors, JsonWriter& json) {
  json.NewLine();
  json.Key("competitors");
  json.BeginArray();
  for (const auto& list : competitors) {
    json.BeginArray();
    for (const Competitor& competitor : list) {
      json.BeginObject();
      json.Text("model", competitor.model);
      json.Text("inputs", competitor.inputs);
      json.Number("cop", competitor.cop);
      json.Number("rmse", competitor.rmse);
      json.Key("chosen");
      json.Truth(competitor.chosen);
      json.EndObject();
    }
    json.EndArray();
  }
  json.EndArray();
}

std::string Data(ZELSolver& solver, const exchange::ProjectDescription& project,
                 const Extras& extras) {
  JsonWriter json;
  json.BeginObject();
  json.Key("models");
  WriteJson(project, json);
  WriteDesigns(solver, project, json);
  json.NewLine();
  json.Key("distributions");
  json.BeginArray();
  for (const auto& input : project.inputs) json.Text(DistributionText(solver, input.name));
  json.EndArray();
  WriteCompetitors(extras.competitors, json);
  json.Key("words");
  json.BeginArray();
  for (const auto& words : extras.words) WriteTexts(words, json);
  json.EndArray();
  json.Key("notes");
  WriteTexts(extras.notes, json);
  for (const auto& [key, document] : {std::pair("sensitivity", &extras.sensitivity),
                                      std::pair("propagation", &extras.propagation),
                                      std::pair("optimization", &extras.optimization)}) {
    if (document->empty()) continue;
    json.Key(key);
    json.Document(*document);
  }
  json.EndObject();
  return json.GetText();
}

}  // namespace

std::string WriteReport(ZELSolver& solver, const exchange::ProjectDescription& project,
                        const Extras& extras) {
  if (project.inputs.empty()) throw exchange::NotDescribable("the project has no inputs");
  if (project.responses.empty())
    throw exchange::NotDescribable("the project has no response with a model");
  std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
  page += "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; script-src " +
          PolicySource(DrawingScript()) + ' ' + PolicySource(PageScript()) + "; style-src " +
          PolicySource(PageStyle()) + "; base-uri 'none'; form-action 'none'\">\n";
  page += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
          HtmlText(project.name) + "</title>\n<style>";
  page += PageStyle();
  page += "</style>\n</head>\n";
  page += PageBody();
  page += "<details><summary>Licences of d3, which draws</summary><pre>" +
          HtmlText(DrawingLicences()) + "</pre></details>\n</footer>\n";
  page += "<script type=\"application/json\" id=\"data\">" + Data(solver, project, extras) +
          "</script>\n<script>";
  page += DrawingScript();
  page += "</script>\n<script>";
  page += PageScript();
  return page + "</script>\n</body>\n</html>\n";
}

}  // namespace corvath::report
