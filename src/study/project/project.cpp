#include "study/project/project.h"

#include "archive/other_copies.h"
#include "foundation/exception.h"
#include "foundation/text.h"
#include "foundation/text_stream.h"
#include "project/file/project_file.h"
#include "project/records/detailed_information.h"
#include "solver/file_signature.h"
#include "solver/zel_solver.h"
#include "study/refusal.h"

#include <boost/iostreams/device/array.hpp>
#include <boost/iostreams/stream.hpp>
#include <boost/make_shared.hpp>
#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <mutex>

namespace corvath::study {
namespace {

using utils::FromUtf8;
using utils::ToUtf8;
using zel::ExtrapolationType;
using zel::ZELSolver;

void RequireFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) throw Refusal(path + ": " + std::strerror(errno));
  if (S_ISDIR(status.st_mode)) throw Refusal(path + ": is a directory");
  if (!S_ISREG(status.st_mode)) throw Refusal(path + ": is no regular file");
}

std::string ReadBytes(const std::string& path) {
  RequireFile(path);
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw Refusal(path + ": " + std::strerror(errno));
  std::string bytes;
  std::vector<char> block(std::size_t{1} << 20);
  while (stream) {
    stream.read(block.data(), static_cast<std::streamsize>(block.size()));
    bytes.append(block.data(), static_cast<std::size_t>(stream.gcount()));
  }
  if (!stream.eof()) throw Refusal(path + ": cannot be read");
  return bytes;
}

}  // namespace

/// Keeps the last errors of the log, for the messages and notes of calls.
class Project::RecentErrors : public utils::LogBase {
 public:
  void Write(std::uint32_t level, std::wstring text) override {
    constexpr std::size_t kMost = 16;
    if (level != utils::log::kError) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (lines_.size() == kMost) return;  // the first ones tell the cause
    lines_.push_back(ToUtf8(text));
  }
  std::vector<std::string> Take() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
};

Project Project::Open(const std::string& path, const std::string& hash) {
  RequireFile(path);
  Project project;
  project.path_ = project.name_ = path;
  project.solver_ = boost::make_shared<ZELSolver>(/*allow_missing_models=*/false);
  project.solver_->SetLogger(utils::log::GetSharedStreamLog());
  try {
    if (!project.solver_->Load(FromUtf8(path))) project.Refuse("Initializing new solver failed.");
    if (!hash.empty() && zel::FileSignature(FromUtf8(path)) != hash)
      project.Refuse("File seems to be corrupt. Signature is invalid or missing");
  } catch (const Refusal&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    project.Refuse(ToUtf8(utils::MessageOf(error)));
  }
  project.TakeNames();
  return project;
}

Project Project::OpenWithBytes(const std::string& path, const std::string& hash) {
  std::string bytes = ReadBytes(path);
  if (!hash.empty() && zel::BytesSignature(bytes) != hash)
    throw Refusal(path + ": the file has another signature than the one that was given");
  Project project = FromBytes(std::move(bytes), path);
  project.path_ = path;
  return project;
}

Project Project::FromBytes(std::string bytes, const std::string& name) {
  Project project;
  project.name_ = name;
  project.bytes_ = boost::make_shared<const std::string>(std::move(bytes));
  project.log_ = boost::make_shared<RecentErrors>();
  project.solver_ = boost::make_shared<ZELSolver>(/*allow_missing_models=*/false);
  project.solver_->SetLogger(project.log_);
  try {
    boost::iostreams::stream<boost::iostreams::array_source> stream(project.bytes_->data(),
                                                                    project.bytes_->size());
    auto record = algorithm::datatypes::ReadProject(stream, name);
    if (!project.solver_->Take(std::move(record), FromUtf8(name))) {
      const auto lines = project.log_->Take();
      project.Refuse(lines.empty() ? "cannot be opened" : lines.back());
    }
  } catch (const Refusal&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    project.Refuse("is no project file, or a damaged one (" + ToUtf8(utils::MessageOf(error)) +
                   ")");
  }
  project.TakeNames();
  project.log_->Take();
  return project;
}

Project Project::FromTraining(const algorithm::datatypes::VRDB& project) {
  constexpr const char* kName = "study.vrdb";
  utils::TextStream bytes;
  algorithm::datatypes::WriteProject(bytes, project, kName);
  return FromBytes(std::move(bytes).str(), "the trained project");
}

void Project::TakeNames() {
  try {
    for (const std::wstring& name : solver_->GetInputNames()) inputs_.push_back(ToUtf8(name));
    for (const std::wstring& name : solver_->GetOutputNames()) outputs_.push_back(ToUtf8(name));
    for (const auto& criterion : solver_->GetCriteriaList())
      criteria_.push_back(ToUtf8(criterion.first));
  } catch (const utils::runtime_error& error) {
    Refuse(ToUtf8(error.GetMessage()));
  }
}

void Project::Refuse(const std::string& what) const {
  throw Refusal(name_ + ": " + what);
}

std::vector<Bounds> Project::GetBounds() const {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  std::vector<Bounds> bounds;
  try {
    const auto& all = solver_->GetInputBounds();
    for (const std::string& input : inputs_) {
      const auto found = all.find(FromUtf8(input));
      if (found == all.end()) Refuse("Input bounds not found for parameter (" + input + ").");
      bounds.push_back({zel::ScalarNumber(found->second.first).value_or(-kInfinity),
                        zel::ScalarNumber(found->second.second).value_or(kInfinity)});
    }
  } catch (const Refusal&) {
    throw;
  } catch (const std::runtime_error& error) {
    Refuse(ToUtf8(utils::MessageOf(error)));
  }
  return bounds;
}

double Project::GetReferenceValue(const std::string& input) const {
  const auto* const parameter = GetRecord().GetParameterManager().FindParameter(FromUtf8(input));
  if (parameter == nullptr) Refuse("Parameter (" + input + ") not found.");
  return parameter->GetReferenceValue().ToDouble();
}

std::vector<double> Project::GetStates(const std::string& input) const {
  using Kinds = enums::DeterministicProperties;
  const auto& record = GetRecord();
  const auto* const parameter = record.GetParameterManager().FindParameter(FromUtf8(input));
  if (parameter == nullptr ||
      record.GetSamplingType() ==
          algorithm::datatypes::DetailedInformationBase::kStochasticSampling)
    return {};
  const auto& property = parameter->GetDeterministicProperty(0);
  std::vector<double> states;
  if (property.GetKind() == Kinds::CONTINUOUS) return states;
  for (const auto& state : property.GetDiscreteStates()) {
    // By index, a model knows a state by its position alone.
    const bool by_value = property.GetKind() == Kinds::ORDINAL_BY_VALUE;
    const auto number = by_value ? zel::ScalarNumber(state) : static_cast<double>(states.size());
    states.push_back(number && std::isfinite(*number) ? *number : std::nan(""));
  }
  return states;
}

std::vector<double> Project::GetCoPs(const std::string& output) const {
  const auto& info = solver_->GetSurrogateInfos().GetSurrogateInfo(FromUtf8(output), 0);
  std::vector<double> values;
  for (const std::string& input : inputs_) {
    const std::wstring name = FromUtf8(input);
    values.push_back(info.HasSingleCoP(name) ? info.GetSingleCoP(name) : -1.0);
  }
  values.push_back(info.GetAppraisalData().HasCoP() ? info.GetAppraisalData().GetCoP() : -1.0);
  return values;
}

std::vector<bool> Project::GetFiltered(const std::string& output) const {
  const auto& info = solver_->GetSurrogateInfos().GetSurrogateInfo(FromUtf8(output), 0);
  std::vector<bool> filtered;
  for (const std::string& input : inputs_)
    filtered.push_back(info.IsParameterOutsideSubspace(FromUtf8(input)));
  return filtered;
}

void Project::Approximate(const Points& designs, double* responses, double* criteria) const {
  solver_->ApproximateInto(designs, ExtrapolationType::kUnbounded, /*throw_on_error=*/true,
                           responses, criteria);
}

std::vector<double> Project::Approximate(const std::string& output, const Points& designs) const {
  const auto predict =
      [](const ZELSolver::VRDB&, const std::wstring&, const ZELSolver::SurrogatePointer& surrogate,
         const Points& points) -> Eigen::MatrixXd { return surrogate->Approximate(points); };
  return solver_->EvaluateResponse(FromUtf8(output), predict, designs,
                                   ExtrapolationType::kUnbounded, /*throw_on_error=*/true);
}

std::vector<double> Project::Gradients(const std::string& output, const Points& designs) const {
  return solver_->GradientsPerResponse(FromUtf8(output), designs, ExtrapolationType::kUnbounded,
                                       /*throw_on_error=*/true);
}

std::vector<double> Project::Errors(const std::string& output, const Points& designs) const {
  return solver_->ErrorsPerResponse(FromUtf8(output), designs, ExtrapolationType::kUnbounded,
                                    /*throw_on_error=*/true);
}

const algorithm::datatypes::VRDB& Project::GetRecord() const {
  return solver_->GetProject();
}

std::vector<std::string> Project::TakeLog() const {
  return log_ ? log_->Take() : std::vector<std::string>();
}

}  // namespace corvath::study
