#pragma once

#include "foundation/log.h"
#include "metamodel/types.h"
#include "project/vrdb.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace corvath::zel {
class ZELSolver;
}

namespace corvath::study {

/// Range of an input in the project's designs. An end that is no number is infinite.
struct Bounds {
  double lower;
  double upper;
};

/// A project with its models ready for use. It does not change: threads may share it, copies share
/// what they hold. m inputs, R outputs (responses, or elements "name[i]" of vectors), C criteria.
class Project {
 public:
  using Points = math::metamodel::ConstPoints;

  /// Reads a file. @param hash  expected signature of the file; empty: not checked
  /// @throws Refusal  with the reason
  static Project Open(const std::string& path, const std::string& hash = {});
  /// The same, and keeps the bytes of the file.
  static Project OpenWithBytes(const std::string& path, const std::string& hash = {});
  /// @param name  for messages. @throws Refusal  these are no bytes of a project file
  static Project FromBytes(std::string bytes, const std::string& name);
  /// A project that was just trained. Its bytes call it "study.vrdb".
  static Project FromTraining(const algorithm::datatypes::VRDB& project);

  /// Where it was read; empty for one that came otherwise.
  const std::string& GetPath() const { return path_; }
  /// For messages.
  const std::string& GetName() const { return name_; }
  /// The bytes of its file; empty after Open().
  std::string_view GetBytes() const { return bytes_ ? std::string_view(*bytes_) : ""; }

  const std::vector<std::string>& GetInputs() const { return inputs_; }
  const std::vector<std::string>& GetOutputs() const { return outputs_; }
  const std::vector<std::string>& GetCriteria() const { return criteria_; }

  /// Of each input. @throws Refusal  the project has none
  std::vector<Bounds> GetBounds() const;
  /// The nominal value of an input; NaN when none is set.
  double GetReferenceValue(const std::string& input) const;
  /// The values that a discrete input takes, as models know them, in the order of the project; NaN
  /// for one that is no number. Empty for continuous and random inputs.
  std::vector<double> GetStates(const std::string& input) const;
  /// Coefficients of prognosis of the model of an output: m single ones, then the total; -1 where
  /// the project has none.
  std::vector<double> GetCoPs(const std::string& output) const;
  /// Whether the model of an output leaves each input out: m.
  std::vector<bool> GetFiltered(const std::string& output) const;

  /// Predicts at n designs (n x m), without a check of bounds.
  /// @param responses  receives R * n values, output k at design d at [k * n + d]; NaN where a model
  ///                   has no prediction, and the log says why
  /// @param criteria   receives n * C values, design after design; null: none are evaluated
  void Approximate(const Points& designs, double* responses, double* criteria) const;
  /// Predictions of one output: n values. @throws std::exception  there is none
  std::vector<double> Approximate(const std::string& output, const Points& designs) const;
  /// n x m values, row after row. @throws std::exception  the model has none
  std::vector<double> Gradients(const std::string& output, const Points& designs) const;
  /// n x 5 values, row after row: local CoP, root mean square, mean and mean absolute error, density.
  /// @throws std::exception  the model has none
  std::vector<double> Errors(const std::string& output, const Points& designs) const;

  /// All that the file holds.
  const algorithm::datatypes::VRDB& GetRecord() const;
  /// For what is not told above. Its calls are safe on several threads.
  zel::ZELSolver& GetSolver() const { return *solver_; }
  /// The errors that the log has got since the last call, at most a few: of this project's use by
  /// all threads. Empty after Open(), which logs on the process's streams.
  std::vector<std::string> TakeLog() const;

 private:
  class RecentErrors;

  Project() = default;
  void TakeNames();
  [[noreturn]] void Refuse(const std::string& what) const;

  std::string path_;
  std::string name_;
  boost::shared_ptr<const std::string> bytes_;
  boost::shared_ptr<RecentErrors> log_;  ///< null after Open()
  boost::shared_ptr<zel::ZELSolver> solver_;
  std::vector<std::string> inputs_, outputs_, criteria_;
};

}  // namespace corvath::study
