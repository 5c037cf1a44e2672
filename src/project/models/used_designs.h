#pragma once

namespace corvath::algorithm::datatypes {

class DesignManager;
class ParameterManager;
class SurrogateInfoContainer;

/// How the support points of a model become designs that can be looked up.
struct UsedDesignSearch {
  bool deterministic;  ///< by the parameters' domains; otherwise values of random variables
  bool complete;       ///< add the parameters that a model does not use, at their reference values
  bool reverse;        ///< the last design of several equal ones counts, otherwise the first
};

/// Finds, for each model, the designs that were its support points and stores their ids. Dependent
/// parameters do not count in the comparison. A model for which this fails keeps no ids.
void RecoverUsedDesigns(SurrogateInfoContainer& infos, const DesignManager& designs,
                        const ParameterManager& parameters, const UsedDesignSearch& search);

}  // namespace corvath::algorithm::datatypes
