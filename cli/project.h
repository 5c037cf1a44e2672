#pragma once

#include "table_columns.h"

#include <string>
#include <vector>

namespace cli {

/// One project through the public C interface. A failing call is a Refusal with the library's text.
class Project {
 public:
  /// Opens the file. @param hash  expected signature; empty: not checked
  Project(std::string file, std::string hash);

  const std::string& GetFile() const { return file_; }
  const std::vector<std::string>& GetInputs() const { return inputs_; }
  const std::vector<std::string>& GetOutputs() const { return outputs_; }
  const std::vector<std::string>& GetCriteria() const { return criteria_; }

  /// Lower and upper bound of each input: 2 * m values.
  std::vector<double> GetBounds() const;
  double GetReferenceValue(const std::string& parameter) const;
  /// Single CoP of each input, then the total: m + 1 values, -1 for none.
  std::vector<double> GetCoPs(const std::string& output) const;
  /// Whether the model of `output` leaves each input out: m values.
  std::vector<bool> GetFiltered(const std::string& output) const;

  /// What the columns of the table were that it was trained on. See TableColumns.
  TableColumns ReadColumns() const;

  /// dzel2_solve(): `inputs` input after input; resizes `out` to what `flags` select.
  void Solve(unsigned int n_designs, const std::vector<double>& inputs, unsigned int flags,
             std::vector<double>& out) const;

  /// dzel2_get_per_response(): likewise, for one output.
  void SolveOne(const std::string& output, unsigned int n_designs,
                const std::vector<double>& inputs, unsigned int flags,
                std::vector<double>& out) const;

 private:
  std::vector<std::string> GetNames(unsigned int flag) const;
  const char* Hash() const { return hash_.empty() ? nullptr : hash_.c_str(); }
  void Check(int status) const;

  std::string file_;
  std::string hash_;
  std::vector<std::string> inputs_;
  std::vector<std::string> outputs_;
  std::vector<std::string> criteria_;
};

}  // namespace cli
