#include "commands.h"
#include "csv_reader.h"
#include "csv_writer.h"
#include "output_file.h"
#include "progress_line.h"
#include "project.h"
#include "standard_output.h"

#include <zelsolver/zelsolver.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
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

std::string Quoted(const std::string& name) {
  return '"' + name + '"';
}

std::string Number(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

/// The rows of one block, and where they came from.
class Designs {
 public:
  Designs(const CsvReader& reader, const std::vector<std::string>& inputs)
      : reader_(reader), inputs_(inputs), rows_(kBlock * inputs.size()) {}

  /// Finds the column of each input. @throws Refusal  an input has none, or two
  void ReadHeader(const CsvReader::Record& header) {
    num_columns_ = header.size();
    for (const std::string& input : inputs_) {
      const auto found = std::find(header.begin(), header.end(), input);
      if (found == header.end())
        throw Refusal(reader_.GetName() + ": row 1: no column for the input " + Quoted(input) +
                      Hint(header));
      if (std::find(found + 1, header.end(), input) != header.end())
        throw Refusal(reader_.GetName() + ": row 1: two columns " + Quoted(input));
      columns_.push_back(static_cast<std::size_t>(found - header.begin()));
    }
  }

  void Add(std::uint64_t row, const CsvReader::Record& record) {
    if (record.size() != num_columns_)
      throw Refusal(reader_.GetName() + ": row " + std::to_string(row) + ": " +
                    std::to_string(record.size()) + " cells, but the header has " +
                    std::to_string(num_columns_));
    if (size_ == 0) first_row_ = row;
    for (std::size_t i = 0; i < inputs_.size(); ++i)
      rows_[size_ * inputs_.size() + i] = Parse(row, i, record[columns_[i]]);
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
          throw Refusal(Place(first_row_ + d, i) + ": " + Number(value) + " is outside [" +
                        Number(bounds[2 * i]) + ", " + Number(bounds[2 * i + 1]) +
                        "]; --extrapolate predicts there too");
      }
  }

 private:
  std::string Place(std::uint64_t row, std::size_t input) const {
    return reader_.GetName() + ": row " + std::to_string(row) + ", column " +
           Quoted(inputs_[input]);
  }

  static std::string Hint(const CsvReader::Record& header) {
    if (header.size() == 1 && header[0].find_first_of(";\t") != std::string::npos)
      return " (columns are separated by commas)";
    return "";
  }

  double Parse(std::uint64_t row, std::size_t input, const std::string& cell) const {
    const char* begin = cell.data();
    const char* const end = begin + cell.size();
    if (begin != end && *begin == '+') ++begin;  // from_chars knows no plus sign
    double value = 0.0;
    const auto result = std::from_chars(begin, end, value);
    if (result.ec == std::errc::result_out_of_range)
      throw Refusal(Place(row, input) + ": " + Quoted(cell) + " is beyond the range of doubles");
    if (result.ec != std::errc() || result.ptr != end || begin == end)
      throw Refusal(Place(row, input) + ": " + Quoted(cell) + " is not a number");
    return value;
  }

  const CsvReader& reader_;
  const std::vector<std::string>& inputs_;
  std::size_t num_columns_ = 0;
  std::vector<std::size_t> columns_;  ///< of each input in the file
  std::vector<double> rows_;          ///< design after design
  std::vector<double> by_input_;
  std::size_t size_ = 0;
  std::uint64_t first_row_ = 0;
};

class Solver {
 public:
  explicit Solver(const SolveOptions& options)
      : options_(options),
        project_(options.file, options.hash),
        bounds_(project_.GetBounds()),
        reader_(options.in),
        designs_(reader_, project_.GetInputs()),
        file_(options.out),
        writer_(file_) {
    flags_ = ZEL_SOLVE_RESPONSES;
    if (options.extrapolate) flags_ |= ZEL_SOLVE_EXTRAPOLATE;
    if (options.criteria) flags_ |= ZEL_SOLVE_CRITERIA;
    const auto& outputs = project_.GetOutputs();
    for (const auto& name : options.gradients)
      if (std::find(outputs.begin(), outputs.end(), name) == outputs.end())
        throw Refusal(options.file + ": no response " + Quoted(name));
    for (const auto& name : outputs) {
      const bool gradients = std::find(options.gradients.begin(), options.gradients.end(), name) !=
                             options.gradients.end();
      extras_.emplace_back(project_, name, options.density, options.errors, gradients);
    }
  }

  void Run() {
    bool has_header = false;
    reader_.ReadAll([&](std::uint64_t row, const CsvReader::Record& record) {
      if (!has_header) {
        designs_.ReadHeader(record);
        WriteHeader();
        has_header = true;
        return;
      }
      designs_.Add(row, record);
      if (designs_.IsFull()) SolveBlock();
    });
    if (!has_header) throw Refusal(reader_.GetName() + ": no header row");
    if (designs_.GetSize() > 0) SolveBlock();
    writer_.Flush();
    file_.Commit();
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
    progress_.Update(num_solved_, reader_.GetProgress());
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
