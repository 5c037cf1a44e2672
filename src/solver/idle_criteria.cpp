#include "solver/idle_criteria.h"

#include "foundation/log_line.h"
#include "foundation/parallel.h"
#include "solver/row_criteria.h"

#include <algorithm>
#include <set>
#include <utility>

namespace corvath::zel {

std::unique_ptr<RowCriteria> IdleCriteria::Take(const std::vector<std::wstring>& outputs) {
  std::unique_ptr<RowCriteria> rows(idle_.exchange(nullptr));
  if (rows && rows->GetOutputs() != outputs) rows.reset();
  return rows;
}

void IdleCriteria::GiveBack(std::unique_ptr<RowCriteria> rows) {
  if (rows->IsLasting()) delete idle_.exchange(rows.release());
}

void IdleCriteria::Drop() {
  delete idle_.exchange(nullptr);
}

void EvaluateCriteriaAtRows(const std::vector<std::wstring>& inputs,
                            const std::vector<std::wstring>& outputs,
                            const algorithm::datatypes::CriterionSequence& criteria,
                            const math::metamodel::ConstPoints& x,
                            const math::metamodel::ConstPoints& responses,
                            const boost::shared_ptr<utils::LogBase>& log, IdleCriteria& idle,
                            double* values) {
  // No row depends on another, so the ranges may follow the number of threads. A range may
  // cost as much as some 150 rows, for its calculator and the parsing of the texts.
  constexpr std::size_t kLeastRows = 2048;
  const auto n = static_cast<std::size_t>(x.rows());
  const std::size_t threads = utils::GetNumThreads();
  const std::size_t count =
      threads == 1 ? 1 : std::clamp<std::size_t>(n / kLeastRows, 1, 2 * threads);
  std::vector<std::vector<RowCriteria::Problem>> problems(count);
  utils::ParallelTasks(count, [&](std::size_t range) {
    auto rows = idle.Take(outputs);
    if (!rows) rows = std::make_unique<RowCriteria>(inputs, outputs, criteria);
    const std::size_t begin = range * n / count;
    rows->EvaluateRows(x.data() + begin, static_cast<std::size_t>(x.outerStride()),
                       responses.data() + begin, static_cast<std::size_t>(responses.outerStride()),
                       (range + 1) * n / count - begin, values + begin * rows->GetCount());
    problems[range] = rows->TakeProblems();
    idle.GiveBack(std::move(rows));
  });
  std::set<std::wstring> told;
  for (const auto& of_range : problems)
    for (const RowCriteria::Problem& problem : of_range)
      if (told.insert(problem.name).second)
        for (const std::wstring& message : problem.messages)
          utils::log::LogLine(log, utils::log::kError)
              << L"Error calculating criteria: " << message;
}

}  // namespace corvath::zel
