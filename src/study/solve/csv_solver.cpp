#include "study/solve/csv_solver.h"

#include "foundation/parallel.h"
#include "study/refusal.h"
#include "study/solve/design_block.h"
#include "study/solve/design_rows.h"
#include "study/table/csv_cell.h"
#include "study/table/csv_reader.h"
#include "study/table/csv_writer.h"
#include "study/table/name_hint.h"

#include <algorithm>
#include <deque>

namespace corvath::study {
namespace {

/// Designs of one call: enough to make its cost vanish, few enough to keep a block of any project,
/// with the text of its results, in some 30 megabytes.
constexpr std::size_t kMostRowsOfBlock = 4096;
constexpr std::size_t kLeastRows = 64;
constexpr std::size_t kMostValues = std::size_t{1} << 20;
constexpr std::size_t kMostBlocks = 32;  ///< under way
constexpr const char* kErrorNames[Extra::kNumErrors] = {"local_cop", "rmse", "mean_error",
                                                        "mean_abs_error"};

/// What passes through the solving: a part of the table, its designs, and the text of their results.
struct Block {
  PlainLines lines;     ///< not read yet, if any
  NumberFormat format;  ///< of their numbers
  DesignRows rows;
  double share = 0.0;  ///< of the table that was read with it

  std::vector<std::uint64_t> outside;  ///< designs, by input
  std::vector<std::string> notes;
  CsvText text;
  std::vector<double> responses;
  std::vector<double> criteria;

  /// Keeps the memory.
  void Clear() {
    lines.text.clear();
    rows.numbers.clear();
    notes.clear();
    text.Clear();
  }
};

class CsvSolver {
 public:
  CsvSolver(const Project& project, const CsvSolveRequest& request, const Progress& progress)
      : project_(project),
        request_(request),
        progress_(progress),
        ranges_(project, request.extrapolate),
        reader_(request.in),
        cells_(project.GetInputs(), TableColumns::FromProject(project.GetRecord())),
        file_(request.out, request.standard_output, request.watcher),
        outside_(project.GetInputs().size()) {
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
    std::size_t num_values =
        outputs.size() + (request.criteria ? project_.GetCriteria().size() : 0);
    for (const Extra& extra : extras_) num_values += extra.GetWidth();
    block_rows_ = std::clamp(kMostValues / std::max<std::size_t>(num_values, 1), kLeastRows,
                             kMostRowsOfBlock);
  }

  CsvSolveSummary Run() {
    while (!cells_.HasHeader() && (has_more_ = ReadOn())) {
    }
    if (!cells_.HasHeader()) throw Refusal(reader_.GetName() + ": no header row");
    blocks_.resize(std::min(kMostBlocks, utils::GetNumThreads() + 2));
    utils::ParallelPipeline(
        blocks_.size(), [this](std::size_t i) { return Fill(blocks_[i]); },
        [this](std::size_t i) { Solve(blocks_[i]); }, [this](std::size_t i) { Take(blocks_[i]); });
    if (!has_written_header_) WriteHeader();  // a table without designs
    file_.Commit();
    summary_.table = reader_.GetName();
    summary_.format = reader_.DescribeFormat();
    for (std::size_t i = 0; i < project_.GetInputs().size(); ++i)
      if (const std::uint64_t n = outside_[i])
        summary_.outside.emplace_back(project_.GetInputs()[i], n);
    for (std::string& line : project_.TakeLog()) summary_.notes.push_back(std::move(line));
    return std::move(summary_);
  }

 private:
  /// Reads a piece of the table into `read_`. @return  false at the end
  bool ReadOn() {
    PlainLines lines;
    const bool has_more = reader_.ReadSome(
        [&](std::uint64_t row, const CsvReader::Record& record) {
          if (!cells_.HasHeader())
            return cells_.SetHeader(CsvHeader(reader_.GetName(), row, record));
          if (!is_open_) read_.emplace_back();
          is_open_ = true;
          DesignRows& rows = read_.back().rows;
          cells_.Read(row, record, reader_.GetNumberFormat(), rows);
          if (rows.GetSize() == block_rows_) is_open_ = false;
        },
        block_rows_, &lines);
    if (!lines.text.empty()) {
      read_.emplace_back();
      read_.back().lines = std::move(lines);
      read_.back().format = reader_.GetNumberFormat();
      is_open_ = false;
    }
    return has_more;
  }

  bool Fill(Block& block) {
    // A block that is open may still get rows.
    while (has_more_ && read_.size() < (is_open_ ? 2 : 1)) has_more_ = ReadOn();
    if (read_.empty()) return false;
    block.Clear();
    std::swap(block.lines, read_.front().lines);
    std::swap(block.rows, read_.front().rows);
    block.format = read_.front().format;
    read_.pop_front();
    block.share = reader_.GetProgress();
    return true;
  }

  /// Behind the first block that is solved: a table that is refused there leaves nothing on a stream.
  void WriteHeader() {
    has_written_header_ = true;
    CsvText text;
    for (const auto& name : project_.GetOutputs()) text.Add(name);
    if (request_.criteria)
      for (const auto& name : project_.GetCriteria()) text.Add(name);
    for (const Extra& extra : extras_) {
      const std::string& output = extra.GetOutput();
      switch (extra.GetKind()) {
        case Extra::Kind::kGradients:
          for (const auto& input : project_.GetInputs()) text.Add(output + ":d/d " + input);
          break;
        case Extra::Kind::kDensity:
          text.Add(output + ":density");
          break;
        default:
          for (const char* error : kErrorNames) text.Add(output + ':' + error);
      }
    }
    text.EndRecord();
    file_.Write(text.Get());
  }

  void Solve(Block& block) {
    cells_.ReadLines(block.lines, reader_.GetSeparator(), block.format, block.rows);
    const std::size_t n = block.rows.GetSize();
    block.outside.assign(outside_.size(), 0);
    if (n == 0) return;
    const Project::Points designs = block.rows.Get();
    ranges_.Count(designs, block.outside,
                  [&](std::size_t design, std::size_t input, const std::string& what) {
                    throw Refusal(cells_.Place(block.rows.numbers[design], input) + ": " + what +
                                  "; " + OptionName(request_.wording, "extrapolate") +
                                  " predicts there too");
                  });
    const std::size_t num_outputs = project_.GetOutputs().size();
    const std::size_t num_criteria = request_.criteria ? project_.GetCriteria().size() : 0;
    block.responses.resize(num_outputs * n);
    block.criteria.resize(num_criteria * n);
    project_.Approximate(designs, block.responses.data(),
                         num_criteria > 0 ? block.criteria.data() : nullptr);
    std::vector<std::vector<double>> extra_values;
    for (Extra& extra : extras_) extra_values.push_back(extra.Solve(designs, block.notes));
    CsvText& text = block.text;
    for (std::size_t d = 0; d < n; ++d) {
      for (std::size_t k = 0; k < num_outputs; ++k) text.Add(block.responses[k * n + d]);
      for (std::size_t k = 0; k < num_criteria; ++k) text.Add(block.criteria[d * num_criteria + k]);
      for (std::size_t e = 0; e < extras_.size(); ++e)
        for (std::size_t i = 0; i < extras_[e].GetWidth(); ++i)
          text.Add(extra_values[e][d * extras_[e].GetWidth() + i]);
      text.EndRecord();
    }
  }

  void Take(Block& block) {
    if (!has_written_header_) WriteHeader();
    file_.Write(block.text.Get());
    for (std::size_t i = 0; i < outside_.size(); ++i) outside_[i] += block.outside[i];
    for (std::string& note : block.notes) summary_.notes.push_back(std::move(note));
    summary_.num_designs += block.rows.GetSize();
    if (progress_ && !progress_(block.share, std::to_string(summary_.num_designs) + " designs"))
      throw Cancelled();
  }

  const Project& project_;
  const CsvSolveRequest& request_;
  const Progress& progress_;
  InputRanges ranges_;
  CsvReader reader_;
  InputCells cells_;
  OutputFile file_;
  std::deque<Extra> extras_;
  std::size_t block_rows_ = 1;  ///< at most
  std::deque<Block> read_;      ///< not handed on yet
  bool is_open_ = false;        ///< whether more rows may come to the last one
  bool has_more_ = true;        ///< of the table
  bool has_written_header_ = false;
  std::vector<Block> blocks_;           ///< under way
  std::vector<std::uint64_t> outside_;  ///< designs, by input
  CsvSolveSummary summary_;
};

}  // namespace

CsvSolveSummary SolveCsv(const Project& project, const CsvSolveRequest& request,
                         const Progress& progress) {
  return CsvSolver(project, request, progress).Run();
}

std::string DescribeOutside(const CsvSolveSummary& summary) {
  std::string list;
  for (const auto& [input, count] : summary.outside)
    list += (list.empty() ? "" : ", ") + input + ' ' + std::to_string(count) + " of " +
            std::to_string(summary.num_designs);
  return list.empty() ? "" : "outside the range of the project's designs: " + list;
}

}  // namespace corvath::study
