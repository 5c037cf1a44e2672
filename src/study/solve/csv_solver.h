#pragma once

#include "study/progress.h"
#include "study/project/project.h"
#include "study/table/output_file.h"
#include "study/wording.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace corvath::study {

/// Predictions at each row of a CSV.
struct CsvSolveRequest {
  std::string in;   ///< CSV with a header row; "-" is standard input
  std::string out;  ///< CSV
  bool extrapolate = false;
  bool errors = false;
  bool densities = false;
  bool criteria = false;
  std::vector<std::string> gradients;    ///< responses of which to add the gradients
  Wording wording = Wording::kKeys;      ///< of messages
  std::FILE* standard_output = nullptr;  ///< see OutputFile
  FileWatcher* watcher = nullptr;        ///< likewise
};

/// What there is to tell afterwards.
struct CsvSolveSummary {
  std::string table;   ///< its name for messages
  std::string format;  ///< see TableSource::DescribeFormat
  std::uint64_t num_designs = 0;
  std::vector<std::pair<std::string, std::uint64_t>> outside;  ///< designs by input, if any
  std::vector<std::string> notes;                              ///< "no gradients of y: ..."
};

/// Solves in blocks, so that memory does not grow with the rows. The output takes its place at the
/// end.
/// @throws Refusal    the table, a name or a value is refused; with the place
/// @throws Cancelled  `progress` said so
CsvSolveSummary SolveCsv(const Project& project, const CsvSolveRequest& request,
                         const Progress& progress);

/// "outside the range of the project's designs: x 3 of 200"; empty if there are none.
std::string DescribeOutside(const CsvSolveSummary& summary);

}  // namespace corvath::study
