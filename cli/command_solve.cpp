#include "commands.h"
#include "csv_writer.h"
#include "input_reach.h"
#include "output_file.h"
#include "progress_line.h"
#include "project.h"
#include "standard_output.h"
#include "study/table/csv_cell.h"
#include "study/table/csv_header.h"
#include "study/table/csv_reader.h"
#include "study/table/name_hint.h"
#include "study/table/table_columns.h"

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

  /// Each quantity by itself: a model without the one may have the other. What it refuses is NaN, and
  /// standard error says why.
  void Solve(std::size_t n, const std::vector<double>& inputs) {
    for (Block& block : blocks_) {
      block.values.assign(n * block.width, std::nan(""));
      if (block.refused) continue;
      try {
        project_.SolveResponse(output_, inputs, block.flag | ZEL_RESPONSE_EXTRAPOLATE,
                               block.values);
      } catch (const zelsolver::Error& error) {
        block.refused = true;
        std::cerr << "zel: no " << NameOf(block.flag) << " of " << output_ << ": " << error.what()
                  << '\n';
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

  static const char* NameOf(unsigned int flag) {
    if (flag == ZEL_RESPONSE_GRADIENTS) return "gradients";
    return flag == ZEL_RESPONSE_DENSITIES ? "density" : "errors";
  }

  void Add(unsigned int flag, std::size_t width) { blocks_.push_back({flag, width, false, {}}); }

  const Project& project_;
  std::string output_;
  std::vector<Block> blocks_;
};

std::string Number(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

bool IsOutside(double value, const zelsolver::Bounds& bounds) {
  return value < bounds.lower - ZEL_BOUNDS_TOLERANCE || value > bounds.upper + ZEL_BOUNDS_TOLERANCE;
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

  /// Counts values outside the bounds, as the library does.
  /// @param reach  beyond it a value is refused
  /// @throws Refusal  it is, and where
  void CheckBounds(const std::vector<zelsolver::Bounds>& bounds,
                   const std::vector<zelsolver::Bounds>& reach,
                   std::vector<std::uint64_t>& num_outside) const {
    for (std::size_t d = 0; d < size_; ++d)
      for (std::size_t i = 0; i < inputs_.size(); ++i) {
        const double value = rows_[d * inputs_.size() + i];
        if (!IsOutside(value, bounds[i])) continue;
        if (IsOutside(value, reach[i]))
          throw Refusal(header_->Place(row_numbers_[d], columns_[i]) + ": " + Number(value) +
                        " is outside [" + Number(bounds[i].lower) + ", " + Number(bounds[i].upper) +
                        "]; --extrapolate predicts there too");
        ++num_outside[i];
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
        project_(OpenProject(options.file, options.hash)),
        record_(ReadRecord(project_)),
        bounds_(project_.GetBounds()),
        reach_(options.extrapolate
                   ? std::vector<zelsolver::Bounds>(bounds_.size(), {-HUGE_VAL, HUGE_VAL})
                   : ReachOfInputs(record_, project_.GetInputs(), bounds_)),
        num_outside_(bounds_.size()),
        reader_(options.in),
        designs_(project_.GetInputs(), TableColumns::FromProject(record_)),
        file_(options.out),
        writer_(file_) {
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
    progress_.Clear();
    const std::string format = reader_.DescribeFormat();
    if (!options_.quiet && !format.empty())
      std::cerr << "zel: " << reader_.GetName() << ": " << format << '\n';
    const std::string outside = DescribeOutside();
    if (!options_.quiet && !outside.empty())
      std::cerr << "zel: " << reader_.GetName() << ": " << outside << '\n';
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

  /// "outside the range of the project's designs: area_1 3 of 200, load_inner 17 of 200"; empty if
  /// there are none.
  std::string DescribeOutside() const {
    std::string list;
    for (std::size_t i = 0; i < num_outside_.size(); ++i)
      if (num_outside_[i] > 0)
        list += (list.empty() ? "" : ", ") + project_.GetInputs()[i] + ' ' +
                std::to_string(num_outside_[i]) + " of " + std::to_string(num_solved_);
    return list.empty() ? "" : "outside the range of the project's designs: " + list;
  }

  void SolveBlock() {
    designs_.CheckBounds(bounds_, reach_, num_outside_);
    const std::size_t n = designs_.GetSize();
    const auto& inputs = designs_.ByInput();
    values_.resize(project_.GetSize(inputs, flags_));
    project_.Solve(inputs, flags_, values_);
    for (Extras& extras : extras_) extras.Solve(n, inputs);
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
  corvath::algorithm::datatypes::VRDB record_;
  std::vector<zelsolver::Bounds> bounds_;
  std::vector<zelsolver::Bounds> reach_;    ///< at least the bounds
  std::vector<std::uint64_t> num_outside_;  ///< of each input
  CsvReader reader_;
  Designs designs_;
  OutputFile file_;
  CsvWriter writer_;
  ProgressLine progress_;
  // CheckBounds() names the row and decides; the library knows no rows.
  unsigned int flags_ = ZEL_SOLVE_RESPONSES | ZEL_SOLVE_EXTRAPOLATE;
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
