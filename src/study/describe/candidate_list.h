#pragma once

#include "project/records/zel_information.h"

#include <json/json.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace corvath::study {

/// One of the models that competed for a response.
struct Candidate {
  std::string family;  ///< "Linear Regression" for example
  std::uint64_t order = 0;
  bool interactions = false;
  bool ridge = false;  ///< penalised coefficients
  bool box_cox = false;
  std::vector<std::string> inputs;
  double cop = 0.0;
  double cop_adjusted = 0.0;
  double cod = 0.0;
  double cod_adjusted = 0.0;
  double rmse = 0.0;  ///< root mean square of the cross-validated errors
  bool chosen = false;
};

/// The candidates that the project has of a response, by falling CoP; of equal ones the first tried
/// comes first. The chosen one is among them if the project tells which it was.
std::vector<Candidate> ListCandidates(
    const corvath::algorithm::datatypes::ZELInformation& information, const std::wstring& response);

/// A table for a person. The chosen one is marked with *.
void PrintCandidates(const std::vector<Candidate>& candidates, const std::string& indent,
                     std::ostream& out);

/// An array of objects with the names of the members above.
Json::Value CandidatesJson(const std::vector<Candidate>& candidates);

}  // namespace corvath::study
