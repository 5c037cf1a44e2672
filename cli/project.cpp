#include "project.h"

#include "api/call_frame.h"
#include "commands.h"
#include "solver/zel_solver.h"

#include <sys/stat.h>
#include <zelsolver/zelsolver.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace cli {
namespace {

std::string LastError() {
  const char* text = dzel2_getLastError();
  return text == nullptr ? "unknown error" : text;
}

}  // namespace

Project::Project(std::string file, std::string hash)
    : file_(std::move(file)), hash_(std::move(hash)) {
  // The library tells the reason of a failed opening in its log alone.
  struct stat status {};
  if (stat(file_.c_str(), &status) != 0) throw Refusal(file_ + ": " + std::strerror(errno));
  if (S_ISDIR(status.st_mode)) throw Refusal(file_ + ": is a directory");
  inputs_ = GetNames(ZEL_INPUTS);
  outputs_ = GetNames(ZEL_OUTPUTS);
  criteria_ = GetNames(ZEL_CRITERIA);
}

void Project::Check(int status) const {
  if (status != ZEL_OK) throw Refusal(file_ + ": " + LastError());
}

std::vector<std::string> Project::GetNames(unsigned int flag) const {
  char* block = nullptr;
  Check(dzel2_getNames_hash(file_.c_str(), flag, &block, Hash()));
  const std::unique_ptr<char, int (*)(void*)> owner(block, dzel2_free);
  std::vector<std::string> names;
  for (const char* name = block; *name != '\0'; name += names.back().size() + 1)
    names.emplace_back(name);
  return names;
}

std::vector<double> Project::GetBounds() const {
  std::vector<double> bounds(2 * inputs_.size());
  Check(dzel2_getInputBounds_hash(file_.c_str(), bounds.data(), Hash()));
  return bounds;
}

double Project::GetReferenceValue(const std::string& parameter) const {
  double value = 0.0;
  Check(dzel2_getReferenceValuePerParameter_hash(file_.c_str(), parameter.c_str(), &value, Hash()));
  return value;
}

std::vector<double> Project::GetCoPs(const std::string& output) const {
  std::vector<double> values(inputs_.size() + 1);
  Check(dzel2_getCoPValuesPerResponse_hash(file_.c_str(), output.c_str(), values.data(), Hash()));
  return values;
}

std::vector<bool> Project::GetFiltered(const std::string& output) const {
  std::vector<unsigned int> states(inputs_.size() + 1);
  Check(dzel2_getFilteredStatesPerResponse_hash(file_.c_str(), output.c_str(), states.data(),
                                                Hash()));
  return std::vector<bool>(states.begin(), states.end() - 1);
}

TableColumns Project::ReadColumns() const {
  return TableColumns::FromProject(
      corvath::zel::api::ProvideSolver(file_.c_str(), Hash())->GetProject());
}

void Project::Solve(unsigned int n_designs, const std::vector<double>& inputs, unsigned int flags,
                    std::vector<double>& out) const {
  std::size_t values = 0;  // per design
  if ((flags & ZEL_SOLVE_RESPONSES) != 0) values += outputs_.size();
  if ((flags & ZEL_SOLVE_CRITERIA) != 0) values += criteria_.size();
  out.resize(values * n_designs);
  Check(dzel2_solve_hash(file_.c_str(), n_designs, inputs.data(),
                         static_cast<unsigned int>(inputs.size()), flags, out.data(),
                         static_cast<unsigned int>(out.size()), Hash()));
}

void Project::SolveOne(const std::string& output, unsigned int n_designs,
                       const std::vector<double>& inputs, unsigned int flags,
                       std::vector<double>& out) const {
  std::size_t values = 0;  // per design
  if ((flags & ZEL_RESPONSE_GRADIENTS) != 0) values += inputs_.size();
  if ((flags & ZEL_RESPONSE_DENSITIES) != 0) values += 1;
  if ((flags & ZEL_RESPONSE_ERRORS) != 0) values += 4;
  out.resize(values * n_designs);
  Check(dzel2_get_per_response_hash(file_.c_str(), n_designs, inputs.data(),
                                    static_cast<unsigned int>(inputs.size()), output.c_str(), flags,
                                    out.data(), static_cast<unsigned int>(out.size()), Hash()));
}

}  // namespace cli
