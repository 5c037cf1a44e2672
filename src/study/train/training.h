#pragma once

#include "study/progress.h"
#include "study/table/column_choice.h"
#include "study/table/design_table.h"
#include "study/table/table_source.h"
#include "training/train_study.h"

#include <json/json.h>

#include <cstdint>
#include <string>
#include <vector>

namespace corvath::study {

struct TrainRequest {
  ColumnChoice columns;
  std::vector<std::string> criteria;  ///< see ParseCriteria
  bool skip_incomplete = false;       ///< leave rows out that lack an input
  std::uint32_t seed = 1;             ///< of the groups of the cross-validation
  double budget = 60.0;               ///< see TrainSettings
};

/// A training on a table: what was read, then its result.
class Training {
 public:
  /// Reads the table. @throws Refusal  see ReadDesignTable, UseColumns
  Training(TableSource& source, TrainRequest request);

  /// What was read, with notes for the user.
  const DesignTable& GetTable() const { return table_; }

  /// Trains a model for each response.
  /// @throws Refusal    the table or the criteria cannot be trained on
  /// @throws Cancelled  `progress` said so
  void Run(const Progress& progress);

  /// The trained project, with what its numbers do not tell about the columns.
  const training::TrainedStudy& GetStudy() const { return study_; }
  /// Notes of the training and on single CoPs; those of the table are not among them.
  std::vector<std::string> GetNotes() const;
  /// See zelstudy_train().
  Json::Value GetDocument() const;

 private:
  void TellColumns();
  Json::Value ResponseDocument(const training::TrainedResponse& response) const;

  TrainRequest request_;
  DesignTable table_;
  std::vector<std::string> criteria_;
  training::TrainedStudy study_;
};

/// The inputs of a model as model_text.h takes them.
struct ModelInputs {
  ModelInputs(const training::TrainedResponse& response, const std::vector<std::wstring>& all);

  std::vector<std::string> names;
  std::vector<bool> filtered;
  std::vector<double> cops;
};

}  // namespace corvath::study
