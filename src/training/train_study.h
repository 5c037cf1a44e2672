#pragma once

#include "design/criterion.h"
#include "design/named_sequence.h"
#include "project/vrdb.h"
#include "training/train_settings.h"
#include "training/training_table.h"

#include <Eigen/Core>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvath::training {

/// What a training is at.
struct TrainProgress {
  std::wstring response;   ///< full name of the response in work
  std::wstring candidate;  ///< the model in work: "Isotropic Kriging, Box-Cox, 4 inputs"
  std::uint64_t done = 0;  ///< work done, of `total`, over all responses; in no particular unit
  std::uint64_t total = 0;
};

/// Called before each candidate and now and then inside long ones. False ends the training with
/// TrainingInterrupted. May throw, which ends it, too.
using TrainObserver = std::function<bool(const TrainProgress&)>;

/// The observer said so.
class TrainingInterrupted : public std::runtime_error {
 public:
  TrainingInterrupted() : std::runtime_error("The training was interrupted.") {}
};

/// The chosen model of one response.
struct TrainedResponse {
  std::wstring name;                 ///< full name: "y" or "s[2]"
  std::wstring model;                ///< "Linear Regression | 2, Box-Cox" for example
  std::vector<std::wstring> inputs;  ///< those that the model uses
  double cop = 0.0;      ///< 1 - SSE / SST at designs that the choice of the model did not know
  double cop_raw = 0.0;  ///< the same of the chosen model alone: the largest of many
  double cod = 0.0;      ///< the same of the fitted values
  double cod_adjusted = 0.0;  ///< for the number of coefficients
  /// Standard deviation of the noise that kriging finds in the response, in its units; NaN for other
  /// models and for transformed responses.
  double noise = 0.0;
  Eigen::VectorXd single_cops;       ///< m: loss of CoP without the input; 0 for inputs left out
  std::uint64_t num_designs = 0;     ///< that did not fail for this response
  std::uint64_t num_candidates = 0;  ///< that were tried
};

/// A trained study: a whole project, ready to be saved, and what to tell the user about it.
struct TrainedStudy {
  algorithm::datatypes::VRDB project;
  std::vector<TrainedResponse> responses;  ///< in the order of the table
  /// What the user should know: constant inputs and responses, failed designs, a CoP that owes much
  /// to the choice of its model.
  std::vector<std::wstring> notes;
};

/// Trains a model for each response of the table. The models of a response compete by their
/// coefficient of prognosis (see model_competition.h). Constant inputs become constant parameters,
/// a constant response gets its value as model.
/// @param criteria  of the project, see ParseCriterion; evaluated for each design
/// @throws TrainingError        the table, the criteria or the settings cannot be trained on
/// @throws TrainingInterrupted  `observer` returned false
TrainedStudy TrainStudy(const TrainingTable& table, const TrainSettings& settings,
                        const algorithm::datatypes::CriterionSequence& criteria = {},
                        const TrainObserver& observer = {});

/// Writes the project in one step: a failure at any point (a full disk, a signal) leaves what was
/// there before. See SaveProjectFile.
/// @throws std::runtime_error  `Error while writing ...`, with the reason
void WriteStudy(const TrainedStudy& study, const std::string& path);

/// Appends the criterion that a text "name: expression", "name: left <= right" or
/// "name: left >= right" describes; the comparison counts outside brackets alone and makes a limit,
/// an expression by itself a value.
/// @throws TrainingError  no name, a name that the sequence has, an empty or a malformed side
void ParseCriterion(const std::wstring& text, algorithm::datatypes::CriterionSequence& criteria);

}  // namespace corvath::training
