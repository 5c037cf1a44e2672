#pragma once

#include "archive/serialization.h"
#include "design/criterion.h"
#include "design/designs/design.h"
#include "design/designs/design_manager.h"
#include "design/parameters/parameter_manager.h"
#include "foundation/log.h"
#include "metamodel/surrogate.h"
#include "project/models/surrogate_info_container.h"
#include "project/vrdb.h"
#include "solver/idle_criteria.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace corvath::zel {

/// Which bounds the inputs of a design must keep; any other number is refused.
enum class ExtrapolationType : std::uint32_t {
  kUnbounded = 0,
  kParameterLimits = 1,  ///< lower and upper limit of each parameter's deterministic side
  kDataBounds = 2        ///< the range of the project's designs
};

/// Predictions at n designs, R outputs and C criteria; NaN for what could not be computed. The two
/// layouts differ, as the callers of the library know them.
struct ApproximationResult {
  std::vector<double> responses;  ///< R * n: output k at design d at [k * n + d]
  std::vector<double> criteria;   ///< n * C: criterion k at design d at [d * C + k], if asked for
};

/// The number that a bound stands for; nothing if the entry is no scalar number.
std::optional<double> ScalarNumber(const algorithm::datatypes::CDesignEntry& entry);

/// One open project: its models, rebuilt and ready, and the names and bounds that callers see.
///
/// Inputs are in the order of GetInputNames(): a matrix of designs has one row per design and one
/// column per input, in the users' units. What depends on the project alone (names, bounds, which
/// model serves which output) is worked out on first demand and kept, since an open project does
/// not change.
///
/// A response that fails costs only its own values: they are NaN, and the log tells why.
class ZELSolver {
 public:
  using CDesignEntry = algorithm::datatypes::CDesignEntry;
  using Criterion = algorithm::datatypes::Criterion;
  using CriterionSequence = algorithm::datatypes::CriterionSequence;
  using Design = algorithm::datatypes::Design;
  using DesignManager = algorithm::datatypes::DesignManager;
  using ParameterManager = algorithm::datatypes::ParameterManager;
  using SurrogateInfo = algorithm::datatypes::SurrogateInfo;
  using SurrogateInfoContainer = algorithm::datatypes::SurrogateInfoContainer;
  using VRDB = algorithm::datatypes::VRDB;
  using SurrogatePointer = boost::shared_ptr<math::metamodel::SurrogateBase>;
  using ConstPoints = math::metamodel::ConstPoints;
  using LogPointer = boost::shared_ptr<utils::LogBase>;
  using Bounds = algorithm::datatypes::InputBounds;
  using CriteriaList = std::vector<std::pair<std::wstring, Criterion>>;
  /// A quantity of one response at designs: n x r for n designs, each row from its own design.
  /// Called for ranges of the designs, also from several threads at once.
  using Evaluator = std::function<Eigen::MatrixXd(const VRDB&, const std::wstring& response,
                                                  const SurrogatePointer&, const ConstPoints&)>;

  /// @param allow_missing_models  a project without any model is acceptable
  explicit ZELSolver(bool allow_missing_models) : allow_missing_models_(allow_missing_models) {}
  ZELSolver(const ZELSolver&) = delete;
  ZELSolver& operator=(const ZELSolver&) = delete;

  void SetLogger(LogPointer log) { log_ = std::move(log); }
  /// The logger; one that keeps its lines in memory if none was set.
  const LogPointer& GetLogger();

  /// Reads the project and gets it ready. False, with a line in the log, when there is no such file
  /// or Initialize() fails.
  /// @throws what reading a project throws
  bool Load(const std::wstring& path);

  /// Takes a project over that was read already, and gets it ready. False as Load().
  /// @param path  what GetPath() gives; may be empty
  bool Take(VRDB project, std::wstring path);

  /// Builds all models. A model that fails to build stays and fails at use.
  /// False, with a line in the log, when the project has no models (unless that is allowed), or not
  /// those that it promises. Throws no std::exception.
  bool Initialize();

  /// The models that serve this project.
  /// @throws corvath::utils::runtime_error "ZEL file expected.", "Surrogate information not
  ///         available."
  const SurrogateInfoContainer& GetSurrogateInfos() const;

  /// Inputs: the parameters that the models run over.
  const std::vector<std::wstring>& GetInputNames();
  /// Outputs: responses and elements "name[i]" of vector responses that have a model.
  const std::vector<std::wstring>& GetOutputNames();
  /// Criteria with the texts, and the values of the design container.
  const CriteriaList& GetCriteriaList();
  const CriterionSequence& GetCriteriaTemplates();
  /// The range of each parameter in the project's designs, see VRDB::GetInputBounds.
  const Bounds& GetInputBounds();
  /// The project's reference design: reference values of the inputs, responses without values, the
  /// criteria; the status code 7 marks it as built here.
  const Design& GetReferenceDesign();
  VRDB& GetProject() { return vrdb_; }
  /// What threads may share of solvers, for handlers of fork().
  static std::mutex& GetNamesMutex() { return names_mutex_; }
  /// In the child of a fork(): what another thread was building the child builds anew.
  static void RenewErrorsMutex() { new (&errors_mutex_) std::mutex; }
  const std::wstring& GetPath() const { return path_; }

  /// Looks for the first value out of bounds, design by design. The tolerance is 1e-8; NaN is never
  /// out of bounds. With `throw_on_error` a value out of bounds throws, without it the log tells
  /// it.
  /// @returns true if a value is out of bounds
  /// @throws corvath::utils::runtime_error  out of bounds, or another `type`
  bool CheckBounds(const ConstPoints& matrix, ExtrapolationType type, bool throw_on_error);

  /// Responses and, if asked for, criteria at the rows of `matrix`. No objects are made per design
  /// unless there are criteria to evaluate.
  /// @throws corvath::utils::out_of_range   another number of columns than inputs
  /// @throws corvath::utils::runtime_error  see CheckBounds; without `throw_on_error` the result is
  ///         NaN (empty for a wrong number of columns)
  ApproximationResult ApproximateMatrix(const ConstPoints& matrix, bool with_criteria,
                                        ExtrapolationType type, bool throw_on_error);

  /// ApproximateMatrix into memory of the caller, without a copy in between; a value out of bounds
  /// is told before anything is written.
  /// @param matrix     one column per input; must not overlap the results
  /// @param responses  receives R * n values
  /// @param criteria   receives n * C values; null: none are evaluated
  /// @throws as ApproximateMatrix; without `throw_on_error` what failed is left as it is
  void ApproximateInto(const ConstPoints& matrix, ExtrapolationType type, bool throw_on_error,
                       double* responses, double* criteria);

  /// The designs with predicted responses: elements of vector responses merged into one value,
  /// responses without prediction unset, criteria evaluated if asked for.
  /// @param matrix  the inputs of the designs; empty: they are taken from the designs, and what a
  ///                design lacks from the reference design
  /// @throws as ApproximateMatrix; without `throw_on_error` designs out of bounds come back as
  /// given
  DesignManager ApproximateDesigns(const DesignManager& designs, bool with_criteria,
                                   ExtrapolationType type, bool throw_on_error,
                                   const ConstPoints& matrix);

  /// What `evaluator` gives for one response, design after design: n * r values. Empty when the
  /// response has no model or, without `throw_on_error`, when a value is out of bounds or the
  /// evaluation fails.
  /// @throws corvath::utils::runtime_error  unknown response, see CheckBounds; and what `evaluator`
  ///         throws
  std::vector<double> EvaluateResponse(const std::wstring& response, const Evaluator& evaluator,
                                       const ConstPoints& matrix, ExtrapolationType type,
                                       bool throw_on_error);

  /// EvaluateResponse of all outputs, in the order of their names: R * n * r values. NaN for an output
  /// whose response has not a model for each of its elements, or that the project's own list of
  /// responses leaves out. Empty when that holds for all.
  std::vector<double> EvaluateAllResponses(const Evaluator& evaluator, const ConstPoints& matrix,
                                           ExtrapolationType type, bool throw_on_error);

  /// n x 5 values per response: local coefficient of prognosis, root mean square error, mean error,
  /// mean absolute error, density.
  std::vector<double> ErrorsPerResponse(const std::wstring& response, const ConstPoints& matrix,
                                        ExtrapolationType type, bool throw_on_error);
  std::vector<double> ErrorsAllResponses(const ConstPoints& matrix, ExtrapolationType type,
                                         bool throw_on_error);
  /// n x m values: by each input, 0 where the model does not use it.
  std::vector<double> GradientsPerResponse(const std::wstring& response, const ConstPoints& matrix,
                                           ExtrapolationType type, bool throw_on_error);

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  /// Of each column of a model the column of the inputs; empty when the two orders are the same.
  using Columns = std::vector<Eigen::Index>;

  /// One predicted response.
  struct Output {
    std::wstring name;
    const SurrogateInfo* info;
    Columns columns;
    /// Whether every element of its response has a model, and the project counts the response in.
    bool is_complete;
  };

  /// One model for evaluation.
  struct Model {
    SurrogatePointer surrogate;  ///< may be null
    Columns columns;
    bool is_solvable;
  };

  /// Bounds of one input; inputs without bounds have none.
  struct Limit {
    Eigen::Index column;
    double lower;
    double upper;
  };
  using Limits = std::vector<Limit>;

  /// What `find` returns, worked out at the first call. `find` must not come back here.
  template <class T, class Find>
  const T& Once(std::optional<T>& cache, const Find& find) {
    const std::lock_guard<std::mutex> lock(names_mutex_);
    if (!cache) cache = find();
    return *cache;
  }
  void DropCaches();

  std::vector<std::wstring> FindInputNames() const;
  std::vector<Output> FindOutputs(const std::vector<std::wstring>& inputs) const;
  const std::vector<Output>& GetOutputs();
  const Model& GetModel(const std::wstring& response);

  Limits FindLimits(ExtrapolationType type, const std::vector<std::wstring>& inputs,
                    const Bounds& data_bounds) const;
  /// Builds the errors of a model that was stored without, at the first call for all threads. A
  /// model that has none says so itself when they are asked for.
  void BuildErrorsOnce(const std::wstring& response);

  std::wstring FindViolation(const ConstPoints& matrix, ExtrapolationType type);

  std::vector<double> EvaluateModel(const std::wstring& response, const Evaluator& evaluator,
                                    const ConstPoints& matrix, bool throw_on_error,
                                    std::vector<std::wstring>& problems);
  std::wstring ApproximateOutput(const Output& output, const ConstPoints& matrix, double* values);
  std::vector<bool> ApproximateOutputs(const ConstPoints& matrix, std::size_t n, double* responses);
  algorithm::datatypes::EntrySequence GetResponses(std::size_t design, std::size_t n,
                                                   const double* responses,
                                                   const std::vector<bool>& predicted);
  void EvaluateCriteria(const ConstPoints& matrix, const double* responses,
                        const std::vector<bool>& predicted, double* criteria);
  void AddCriteria(std::vector<Design>& designs);
  Eigen::MatrixXd GetInputs(const DesignManager& designs);

  LogPointer log_;
  std::wstring path_;
  VRDB vrdb_;
  std::optional<CriterionSequence> criteria_templates_;
  ParameterManager model_parameters_;  ///< the inputs of the models, known after Initialize
  bool allow_missing_models_;
  /// Guards the caches while they are filled. One for all solvers, so that a fork can wait for it.
  inline static std::mutex names_mutex_;
  std::optional<std::vector<std::wstring>> input_names_;
  std::optional<std::vector<std::wstring>> output_names_;
  std::optional<CriteriaList> criteria_;
  std::optional<std::vector<Output>> outputs_;
  IdleCriteria idle_criteria_;
  std::unordered_map<const SurrogateInfo*, Model> models_;
  /// Held while errors are built. No fork waits for it, that may take long.
  inline static std::mutex errors_mutex_;
  std::unordered_set<const math::metamodel::SurrogateBase*> with_errors_;  ///< or tried in vain
  std::optional<Bounds> input_bounds_;
  std::optional<Limits> data_limits_;
};

}  // namespace corvath::zel

ZEL_EXPORT_KEY(corvath::zel::ZELSolver, "corvath::zel::ZELSolver")

namespace corvath {

class portable_binary_iarchive;

/// A solver that is loaded through a pointer takes any project.
void load_construct_data(portable_binary_iarchive& ar, zel::ZELSolver* solver, unsigned int);

}  // namespace corvath
