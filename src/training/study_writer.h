#pragma once

#include "design/criterion.h"
#include "design/named_sequence.h"
#include "project/vrdb.h"
#include "training/model_competition.h"
#include "training/train_settings.h"
#include "training/training_table.h"

#include <Eigen/Core>

#include <cstddef>
#include <string>
#include <vector>

namespace corvath::training {

/// A project of algorithm type 18 in the making, over deterministic inputs: parameters, designs
/// and criteria from a table, then one model after the other.
class StudyWriter {
 public:
  /// Parameters (constant columns as constant ones), all designs with their ids from 1, criteria
  /// with their values, and the settings. The table is trainable.
  StudyWriter(const TrainingTable& table, const TrainSettings& settings,
              const algorithm::datatypes::CriterionSequence& criteria);

  /// The columns of the table that are not constant: the inputs of the models.
  const std::vector<Eigen::Index>& GetModelColumns() const { return columns_; }

  /// Files the model of a response.
  /// @param rows  of the table: the model's support points
  void AddModel(std::size_t response, const ChosenModel& chosen,
                const std::vector<Eigen::Index>& rows);

  /// The project, after the last model.
  algorithm::datatypes::VRDB Finish();

 private:
  void AddParameters();
  void AddDesigns(const algorithm::datatypes::CriterionSequence& criteria);
  void AddSettings(const TrainSettings& settings);

  const TrainingTable& table_;
  std::vector<Eigen::Index> columns_;
  std::vector<std::wstring> names_;  ///< of columns_
  Eigen::VectorXd uses_;             ///< models that use each of columns_
  algorithm::datatypes::VRDB project_;
};

}  // namespace corvath::training
