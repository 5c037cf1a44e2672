#include "study/solve/csv_solver.h"

#include "study/refusal.h"
#include "study/solve/design_block.h"
#include "study/table/csv_cell.h"
#include "study/table/csv_header.h"
#include "study/table/csv_reader.h"
#include "study/table/csv_writer.h"
#include "study/table/name_hint.h"
#include "study/table/table_columns.h"

#include <algorithm>
#include <optional>

namespace corvath::study {
namespace {

using Index = Eigen::Index;

/// Designs of one call: enough to make its cost vanish, few enough to keep a block of any project
/// in a few megabytes.
constexpr std::size_t kBlock = 4096;
constexpr const char* kErrorNames[Extra::kNumErrors] = {"local_cop", "rmse", "mean_error",
                                                        "mean_abs_error"};

/// The rows of one block, and where they came from.
class Designs {
 public:
  Designs(const std::vector<std::string>& inputs, const TableColumns& columns)
      : inputs_(inputs),
        values_(static_cast<Index>(kBlock), static_cast<Index>(inputs.size())),
        row_numbers_(kBlock) {
    for (const std::string& input : inputs) {
      const TableColumn* const told = columns.Find(input);
      told_.push_back(told == nullptr ? TableColumn() : *told);
    }
  }

  /// Finds the column of each input, under its name or under that which it had in the table of the
  /// training. @throws Refusal  an input has none, or two
  void SetHeader(CsvHeader header) {
    header_ = std::move(header);
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
      const std::string& title = told_[i].title;
      const bool by_title = !title.empty() && !header_->Has(inputs_[i]) && header_->Has(title);
      columns_.push_back(header_->Find(by_title ? title : inputs_[i], "input"));
    }
  }
  bool HasHeader() const { return header_.has_value(); }

  void Add(std::uint64_t row, const CsvReader::Record& record, CsvReader& reader) {
    header_->CheckSize(row, record);
    row_numbers_[size_] = row;
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
      const std::string& cell = record[columns_[i]];
      const CsvNumber number = reader.ReadNumber(cell);
      const bool is_number = number.kind == CsvNumber::Kind::kNumber;
      double& value = values_(static_cast<Index>(size_), static_cast<Index>(i));
      value = number.value;
      if (told_[i].IsRead() && !IsMissing(cell))
        value = told_[i].ReadCell(cell, number.value, is_number, header_->Place(row, columns_[i]));
      else if (!is_number)
        throw Refusal(header_->Place(row, columns_[i]) + ": " + RefusalText(cell, number.kind));
    }
    ++size_;
  }

  std::size_t GetSize() const { return size_; }
  bool IsFull() const { return size_ == kBlock; }
  void Clear() { size_ = 0; }

  Project::Points Get() const { return values_.topRows(static_cast<Index>(size_)); }
  std::string Place(std::size_t design, std::size_t input) const {
    return header_->Place(row_numbers_[design], columns_[input]);
  }

 private:
  const std::vector<std::string>& inputs_;
  std::optional<CsvHeader> header_;
  std::vector<TableColumn> told_;     ///< about each input
  std::vector<std::size_t> columns_;  ///< of each input in the file
  Eigen::MatrixXd values_;            ///< the first `size_` rows count
  std::vector<std::uint64_t> row_numbers_;
  std::size_t size_ = 0;
};

class Solver {
 public:
  Solver(const Project& project, const CsvSolveRequest& request, const Progress& progress)
      : project_(project),
        request_(request),
        progress_(progress),
        ranges_(project, request.extrapolate),
        reader_(request.in),
        designs_(project.GetInputs(), TableColumns::FromProject(project.GetRecord())),
        file_(request.out, request.standard_output, request.watcher),
        writer_(file_) {
    const auto& outputs = project_.GetOutputs();
    const auto& wanted = request.gradients;
    for (const auto& name : wanted)
      if (std::find(outputs.begin(), outputs.end(), name) == outputs.end())
        throw Refusal(project.GetName() + ": no response " + Quoted(name) + "; " +
                      NameHint(name, outputs, "the responses are"));
    for (const auto& name : outputs) {
      if (std::find(wanted.begin(), wanted.end(), name) != wanted.end())
        extras_.emplace_back(project_, name, Extra::Kind::kGradients);
      if (request.densities) extras_.emplace_back(project_, name, Extra::Kind::kDensity);
      if (request.errors) extras_.emplace_back(project_, name, Extra::Kind::kErrors);
    }
  }

  CsvSolveSummary Run() {
    reader_.ReadAll([&](std::uint64_t row, const CsvReader::Record& record) {
      if (!designs_.HasHeader()) {
        designs_.SetHeader(CsvHeader(reader_.GetName(), row, record));
        WriteHeader();
        return;
      }
      designs_.Add(row, record, reader_);
      if (designs_.IsFull()) SolveBlock();
    });
    if (!designs_.HasHeader()) throw Refusal(reader_.GetName() + ": no header row");
    if (designs_.GetSize() > 0) SolveBlock();
    writer_.Flush();
    file_.Commit();
    summary_.table = reader_.GetName();
    summary_.format = reader_.DescribeFormat();
    for (std::size_t i = 0; i < project_.GetInputs().size(); ++i)
      if (const std::uint64_t n = ranges_.GetNumOutside()[i])
        summary_.outside.emplace_back(project_.GetInputs()[i], n);
    for (std::string& line : project_.TakeLog()) summary_.notes.push_back(std::move(line));
    return std::move(summary_);
  }

 private:
  void WriteHeader() {
    for (const auto& name : project_.GetOutputs()) writer_.Add(name);
    if (request_.criteria)
      for (const auto& name : project_.GetCriteria()) writer_.Add(name);
    for (const Extra& extra : extras_) {
      const std::string& output = extra.GetOutput();
      switch (extra.GetKind()) {
        case Extra::Kind::kGradients:
          for (const auto& input : project_.GetInputs()) writer_.Add(output + ":d/d " + input);
          break;
        case Extra::Kind::kDensity:
          writer_.Add(output + ":density");
          break;
        default:
          for (const char* error : kErrorNames) writer_.Add(output + ':' + error);
      }
    }
    writer_.EndRecord();
  }

  void SolveBlock() {
    const Project::Points designs = designs_.Get();
    ranges_.Count(designs, [&](std::size_t design, std::size_t input, const std::string& what) {
      throw Refusal(designs_.Place(design, input) + ": " + what + "; " +
                    OptionName(request_.wording, "extrapolate") + " predicts there too");
    });
    const std::size_t n = designs_.GetSize();
    const std::size_t num_outputs = project_.GetOutputs().size();
    const std::size_t num_criteria = request_.criteria ? project_.GetCriteria().size() : 0;
    responses_.resize(num_outputs * n);
    criteria_.resize(num_criteria * n);
    project_.Approximate(designs, responses_.data(), num_criteria > 0 ? criteria_.data() : nullptr);
    std::vector<std::vector<double>> extra_values;
    for (Extra& extra : extras_) extra_values.push_back(extra.Solve(designs, summary_.notes));
    for (std::size_t d = 0; d < n; ++d) {
      for (std::size_t k = 0; k < num_outputs; ++k) writer_.Add(responses_[k * n + d]);
      for (std::size_t k = 0; k < num_criteria; ++k) writer_.Add(criteria_[d * num_criteria + k]);
      for (std::size_t e = 0; e < extras_.size(); ++e)
        for (std::size_t i = 0; i < extras_[e].GetWidth(); ++i)
          writer_.Add(extra_values[e][d * extras_[e].GetWidth() + i]);
      writer_.EndRecord();
    }
    summary_.num_designs += n;
    designs_.Clear();
    if (progress_ &&
        !progress_(reader_.GetProgress(), std::to_string(summary_.num_designs) + " designs"))
      throw Cancelled();
  }

  const Project& project_;
  const CsvSolveRequest& request_;
  const Progress& progress_;
  InputRanges ranges_;
  CsvReader reader_;
  Designs designs_;
  OutputFile file_;
  CsvWriter writer_;
  std::vector<Extra> extras_;
  std::vector<double> responses_;
  std::vector<double> criteria_;
  CsvSolveSummary summary_;
};

}  // namespace

CsvSolveSummary SolveCsv(const Project& project, const CsvSolveRequest& request,
                         const Progress& progress) {
  return Solver(project, request, progress).Run();
}

std::string DescribeOutside(const CsvSolveSummary& summary) {
  std::string list;
  for (const auto& [input, count] : summary.outside)
    list += (list.empty() ? "" : ", ") + input + ' ' + std::to_string(count) + " of " +
            std::to_string(summary.num_designs);
  return list.empty() ? "" : "outside the range of the project's designs: " + list;
}

}  // namespace corvath::study
