#pragma once

#include "stochastics/random_variable.h"

#include <map>

namespace corvath::algorithm {

/// A variable with the default parameters of its type; instantiated by ZEL_DISTRIBUTION.
template <class Type>
boost::shared_ptr<RV> MakePrototype();

/// Makes random variables by type id: one prototype per type, built once.
class RVFactory {
 public:
  /// The factory of the process, with all distributions registered.
  static RVFactory& GetInstance();

  /// A new variable of the type with its default parameters and the name "RV".
  /// @param id  one of enums::RandomVariable::eType
  /// @throws corvath::utils::runtime_error  "Asking for non existing RV type ident '<id>'"
  boost::shared_ptr<RV> Create(int id) const;

  /// Puts `prototype` in the place of any other of its type. Not while others create.
  void Register(const boost::shared_ptr<RV>& prototype);

 private:
  RVFactory();

  std::map<int, boost::shared_ptr<RV>> prototypes_;
};

}  // namespace corvath::algorithm
