#include "commands.h"
#include "csv_cell.h"
#include "csv_header.h"
#include "csv_reader.h"
#include "csv_writer.h"
#include "name_hint.h"
#include "output_file.h"
#include "progress_line.h"
#include "project.h"
#include "standard_output.h"

#include <zelsolver/zelsolver.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cli {
namespace {

/// Designs of one call of the library: enough to make the cost of a call vanish, few enough to keep
/// a block of any project in a few megabytes.
constexpr std::size_t kBlock = 4096;
constexpr const char* kErrorNames[] = {"local_cop", "rmse", "mean_error", "mean_abs_error"};
constexpr std::size_t kNumErrors = 4;

/// What the options add to one output, as columns: its density, its errors, its gradients.
class Extras {
 public:
  Extras(const Project& project, std::string output, bool density, bool errors, bool gradients)
      : project_(project), output_(std::move(output)) {
    if (gradients) Add(ZEL_RESPONSE_GRADIENTS, project.GetInputs().size());
    if (density) Add(ZEL_RESPONSE_DENSITIES, 1);
    if (errors) Add(ZEL_RESPONSE_ERRORS, kNumErrors);
  }

  void WriteHeader(CsvWriter& writer) const {
    for (const Block& block : blocks_) switch (block.flag) {
        case ZEL_RESPONSE_GRADIENTS:
          for (const auto& input : project_.GetInputs()) writer.Add(output_ + ":d/d " + input);
          break;
        case ZEL_RESPONSE_DENSITIES:
          writer.Add(output_ + ":density");
          break;
        default:
          for (const char* error : kErrorNames) writer.Add(output_ + ':' + error);
      }
  }

  /// Each quantity by itself: a model without the one may have the other. What it refuses is NaN; the
  /// library's log says why.
  void Solve(unsigned int n, const std::vector<double>& inputs, bool extrapolate) {
    for (Block& block : blocks_) {
      if (block.refused) {
        block.values.assign(n * block.width, std::nan(""));
        continue;
      }
      try {
        project_.SolveOne(output_, n, inputs,
                          extrapolate ? block.flag | ZEL_RESPONSE_EXTRAPOLATE : block.flag,
                          block.values);
      } catch (const Refusal&) {
        block.refused = true;
        block.values.assign(n * block.width, std::nan(""));
      }
    }
  }

  void WriteRow(std::size_t design, CsvWriter& writer) const {
    for (const Block& block : blocks_)
      for (std::size_t i = 0; i < block.width; ++i)
        writer.Add(block.values[design * block.width + i]);
  }

 private:
  struct Block {
    unsigned int flag;
    std::size_t width;  ///< values per design
    bool refused;
    std::vector<double> values;
  };

  void Add(unsigned int flag, std::size_t width) { blocks_.push_back({flag, width, false, {}}); }

  const Project& project_;
  std::string output_;
  std::vector<Block> blocks_;
};

std::string Number(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

/// The rows of one block, and where they came from.
class Designs {
 public:
  Designs(const std::vector<std::string>& inputs, const TableColumns& columns)
      : inputs_(inputs), rows_(kBlock * inputs.size()), row_numbers_(kBlock) {
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
      double& value = rows_[size_ * inputs_.size() + i];
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

  /// The block input after input, as the library takes it.
  const std::vector<double>& ByInput() {
    by_input_.resize(size_ * inputs_.size());
    for (std::size_t d = 0; d < size_; ++d)
      for (std::size_t i = 0; i < inputs_.size(); ++i)
        by_input_[i * size_ + d] = rows_[d * inputs_.size() + i];
    return by_input_;
  }

  /// @throws Refusal  a value is outside, as the library counts it
  void CheckBounds(const std::vector<double>& bounds) const {
    constexpr double kTolerance = 1e-8;
    for (std::size_t d = 0; d < size_; ++d)
      for (std::size_t i = 0; i < inputs_.size(); ++i) {
        const double value = rows_[d * inputs_.size() + i];
        if (value < bounds[2 * i] - kTolerance || value > bounds[2 * i + 1] + kTolerance)
          throw Refusal(header_->Place(row_numbers_[d], columns_[i]) + ": " + Number(value) +
                        " is outside [" + Number(bounds[2 * i]) + ", " + Number(bounds[2 * i + 1]) +
                        "]; --extrapolate predicts there too");
      }
  }

 private:
  const std::vector<std::string>& inputs_;
  std::optional<CsvHeader> header_;
  std::vector<TableColumn> told_;     ///< about each input
  std::vector<std::size_t> columns_;  ///< of each input in the file
  std::vector<double> rows_;          ///< design after design
  std::vector<std::uint64_t> row_numbers_;
  std::vector<double> by_input_;
  std::size_t size_ = 0;
};

class Solver {
 public:
  explicit Solver(const SolveOptions& options)
      : options_(options),
        project_(options.file, options.hash),
        bounds_(project_.GetBounds()),
        reader_(options.in),
        designs_(project_.GetInputs(), project_.ReadColumns()),
        file_(options.out),
        writer_(file_) {
    flags_ = ZEL_SOLVE_RESPONSES;
    if (options.extrapolate) flags_ |= ZEL_SOLVE_EXTRAPOLATE;
    if (options.criteria) flags_ |= ZEL_SOLVE_CRITERIA;
    const auto& outputs = project_.GetOutputs();
    for (const auto& name : options.gradients)
      if (std::find(outputs.begin(), outputs.end(), name) == outputs.end())
        throw Refusal(options.file + ": no response " + Quoted(name) + "; " +
                      NameHint(name, outputs, "the responses are"));
    for (const auto& name : outputs) {
      const bool gradients = std::find(options.gradients.begin(), options.gradients.end(), name) !=
                             options.gradients.end();
      extras_.emplace_back(project_, name, options.density, options.errors, gradients);
    }
  }

  void Run() {
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
    const std::string format = reader_.DescribeFormat();
    if (!options_.quiet && !format.empty())
      std::cerr << "zel: " << reader_.GetName() << ": " << format << '\n';
  }

 private:
  void WriteHeader() {
    const auto& outputs = project_.GetOutputs();
    for (const auto& name : outputs) writer_.Add(name);
    if (options_.criteria)
      for (const auto& name : project_.GetCriteria()) writer_.Add(name);
    for (const Extras& extras : extras_) extras.WriteHeader(writer_);
    writer_.EndRecord();
  }

  void SolveBlock() {
    // The library checks bounds, too, but knows no rows.
    if (!options_.extrapolate) designs_.CheckBounds(bounds_);
    const std::size_t n = designs_.GetSize();
    const auto& inputs = designs_.ByInput();
    project_.Solve(static_cast<unsigned int>(n), inputs, flags_, values_);
    for (Extras& extras : extras_)
      extras.Solve(static_cast<unsigned int>(n), inputs, options_.extrapolate);
    const std::size_t num_outputs = project_.GetOutputs().size();
    const std::size_t num_criteria = options_.criteria ? project_.GetCriteria().size() : 0;
    const double* const criteria = values_.data() + num_outputs * n;
    for (std::size_t d = 0; d < n; ++d) {
      for (std::size_t k = 0; k < num_outputs; ++k) writer_.Add(values_[k * n + d]);
      for (std::size_t k = 0; k < num_criteria; ++k) writer_.Add(criteria[d * num_criteria + k]);
      for (const Extras& extras : extras_) extras.WriteRow(d, writer_);
      writer_.EndRecord();
    }
    num_solved_ += n;
    progress_.Update(std::to_string(num_solved_) + " designs", reader_.GetProgress());
    designs_.Clear();
  }

  const SolveOptions& options_;
  Project project_;
  std::vector<double> bounds_;
  CsvReader reader_;
  Designs designs_;
  OutputFile file_;
  CsvWriter writer_;
  ProgressLine progress_;
  unsigned int flags_ = 0;
  std::vector<double> values_;
  std::vector<Extras> extras_;  ///< one for each output
  std::uint64_t num_solved_ = 0;
};

}  // namespace

void RunSolve(const SolveOptions& options) {
  ClaimStandardOutput();  // before the library logs what it meets
  Solver(options).Run();
}

}  // namespace cli
