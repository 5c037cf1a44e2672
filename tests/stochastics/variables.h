#pragma once

#include "foundation/exception.h"
#include "stochastics/rv_factory.h"
#include "support/message_of.h"

#include <initializer_list>
#include <string>
#include <vector>

/// Short builders of random variables.
namespace support {

inline Eigen::VectorXd ToVector(const std::vector<double>& values) {
  return Eigen::Map<const Eigen::VectorXd>(values.data(), static_cast<Eigen::Index>(values.size()));
}

inline boost::shared_ptr<corvath::algorithm::RV> Make(int type) {
  return corvath::algorithm::RVFactory::GetInstance().Create(type);
}

inline boost::shared_ptr<corvath::algorithm::RV> WithParameters(int type,
                                                                const std::vector<double>& values) {
  const auto rv = Make(type);
  rv->SetParameters(ToVector(values));
  return rv;
}

/// @param values  the first moments; the others stay those of the type
inline boost::shared_ptr<corvath::algorithm::RV> WithStats(int type,
                                                           const std::vector<double>& values) {
  const auto rv = Make(type);
  Eigen::VectorXd moments = rv->GetStats();
  moments.head(static_cast<Eigen::Index>(values.size())) = ToVector(values);
  rv->SetStats(moments);
  return rv;
}

template <class Action>
std::string RefusalOf(Action&& action) {
  return MessageOfExactly<corvath::utils::runtime_error>(action);
}

}  // namespace support
