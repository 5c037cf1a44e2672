#include "study/solve/array_solver.h"

#include "foundation/exception.h"
#include "foundation/text.h"
#include "study/refusal.h"
#include "study/solve/design_block.h"
#include "study/table/csv_cell.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <new>

namespace corvath::study {
namespace {

using Index = Eigen::Index;
using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// Designs between two calls of the progress function: enough to keep all processors busy.
constexpr std::size_t kBlock = std::size_t{1} << 16;

class ArraySolver {
 public:
  ArraySolver(const Project& project, const ArraySolveRequest& request, std::size_t n)
      : project_(project),
        request_(request),
        n_(n),
        ranges_(project, request.extrapolate),
        outside_(project.GetInputs().size()) {
    responses_ = &result_.Add("responses", n, request.responses.size());
    if (request.criteria) criteria_ = &result_.Add("criteria", n, project.GetCriteria().size());
    const auto add = [&](const std::vector<std::string>& outputs, Extra::Kind kind,
                         const char* suffix) {
      for (const std::string& output : outputs) {
        extras_.emplace_back(project, output, kind);
        extra_arrays_.push_back(&result_.Add(output + suffix, n, extras_.back().GetWidth()));
      }
    };
    add(request.errors, Extra::Kind::kErrors, "/errors");
    add(request.densities, Extra::Kind::kDensity, "/density");
    add(request.gradients, Extra::Kind::kGradients, "/gradients");
    for (const std::string& name : request.responses)
      columns_.push_back(static_cast<std::size_t>(
          std::find(project.GetOutputs().begin(), project.GetOutputs().end(), name) -
          project.GetOutputs().begin()));
    is_refused_.assign(columns_.size(), false);
  }

  Result Run(const double* inputs, const Progress& progress) {
    const std::size_t m = project_.GetInputs().size();
    for (std::size_t first = 0; first < n_; first += kBlock) {
      const std::size_t count = std::min(kBlock, n_ - first);
      if (progress && !progress(static_cast<double>(first) / static_cast<double>(n_),
                                std::to_string(first) + " designs"))
        throw Cancelled();
      const Eigen::MatrixXd designs = Eigen::Map<const RowMajor>(
          inputs + first * m, static_cast<Index>(count), static_cast<Index>(m));
      SolveBlock(designs, first);
    }
    return Finish();
  }

 private:
  void SolveBlock(const Eigen::MatrixXd& designs, std::size_t first) {
    ranges_.Count(designs, outside_,
                  [&](std::size_t design, std::size_t input, const std::string& what) {
                    throw Refusal("design " + std::to_string(first + design) + ", input " +
                                  Quoted(project_.GetInputs()[input]) + ": " + what +
                                  "; extrapolate predicts there too");
                  });
    const auto count = static_cast<std::size_t>(designs.rows());
    const std::size_t num_outputs = project_.GetOutputs().size();
    if (criteria_ != nullptr || 2 * columns_.size() > num_outputs) {
      all_.resize(num_outputs * count);
      project_.Approximate(
          designs, all_.data(),
          criteria_ == nullptr ? nullptr : criteria_->values.data() + first * criteria_->columns);
      for (std::size_t k = 0; k < columns_.size(); ++k)
        Scatter(all_.data() + columns_[k] * count, count, first, k);
    } else {
      for (std::size_t k = 0; k < columns_.size(); ++k) SolveOne(designs, first, k);
    }
    for (std::size_t e = 0; e < extras_.size(); ++e) {
      const std::vector<double> values = extras_[e].Solve(designs, notes_);
      std::copy(values.begin(), values.end(),
                extra_arrays_[e]->values.begin() +
                    static_cast<std::ptrdiff_t>(first * extras_[e].GetWidth()));
    }
  }

  void SolveOne(const Eigen::MatrixXd& designs, std::size_t first, std::size_t k) {
    const auto count = static_cast<std::size_t>(designs.rows());
    const std::string& name = request_.responses[k];
    std::vector<double> values;
    try {
      if (!is_refused_[k]) values = project_.Approximate(name, designs);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& error) {
      is_refused_[k] = true;
      notes_.push_back("no prediction of " + name + ": " + utils::ToUtf8(utils::MessageOf(error)));
    }
    if (values.size() != count) values.assign(count, std::nan(""));
    Scatter(values.data(), count, first, k);
  }

  void Scatter(const double* values, std::size_t count, std::size_t first, std::size_t k) {
    double* out = responses_->values.data() + first * responses_->columns + k;
    for (std::size_t d = 0; d < count; ++d, out += responses_->columns) *out = values[d];
  }

  Result Finish() {
    const auto texts = [](const std::vector<std::string>& list) {
      Json::Value json(Json::arrayValue);
      for (const std::string& text : list) json.append(text);
      return json;
    };
    Json::Value& document = result_.document;
    document["inputs"] = texts(project_.GetInputs());
    document["responses"] = texts(request_.responses);
    document["criteria"] =
        texts(request_.criteria ? project_.GetCriteria() : std::vector<std::string>());
    document["outside"] = Json::Value(Json::arrayValue);
    for (std::size_t i = 0; i < project_.GetInputs().size(); ++i) {
      if (outside_[i] == 0) continue;
      Json::Value json;
      json["input"] = project_.GetInputs()[i];
      json["designs"] = static_cast<Json::UInt64>(outside_[i]);
      document["outside"].append(json);
    }
    for (std::string& line : project_.TakeLog()) notes_.push_back(std::move(line));
    document["notes"] = texts(notes_);
    return std::move(result_);
  }

  const Project& project_;
  const ArraySolveRequest& request_;
  std::size_t n_;
  InputRanges ranges_;
  Result result_;
  NamedArray* responses_ = nullptr;
  NamedArray* criteria_ = nullptr;
  std::vector<std::uint64_t> outside_;  ///< designs, by input
  std::deque<Extra> extras_;
  std::vector<NamedArray*> extra_arrays_;
  std::vector<std::size_t> columns_;  ///< of the wanted responses among the outputs
  std::vector<bool> is_refused_;      ///< responses that a model cannot predict
  std::vector<double> all_;
  std::vector<std::string> notes_;
};

}  // namespace

Result SolveArray(const Project& project, const ArraySolveRequest& request, const double* inputs,
                  std::size_t n, const Progress& progress) {
  return ArraySolver(project, request, n).Run(inputs, progress);
}

}  // namespace corvath::study
