#pragma once

#include "archive/serialization.h"
#include "design/hierarchical_id.h"
#include "design/parameters/parameter_manager.h"
#include "project/models/surrogate_info_container.h"
#include "project/records/detailed_information.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

namespace corvath::algorithm::datatypes {

/// A project whose model lives in an outside engine, kept as stored. It has no models here.
class ZEL3Information : public DetailedInformationBase {
 public:
  ZEL3Information() = default;

  boost::shared_ptr<DetailedInformationBase> Clone() const override;
  bool IsEqual(const boost::shared_ptr<DetailedInformationBase>& other) const override;

  /// Always empty; made at the first call.
  SurrogateInfoContainer& GetSurrogateInfos();

  std::string zel3_sdb_;
  std::string zel3_configuration_;
  Eigen::MatrixXd zel3_support_points_;
  Eigen::MatrixXd zel3_responses_;
  std::vector<DesignId> zel3_design_ids_;
  ParameterManager zel3_parameter_manager_;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  boost::shared_ptr<SurrogateInfoContainer> surrogate_infos_;
};

}  // namespace corvath::algorithm::datatypes

ZEL_TRACK_ALWAYS(corvath::algorithm::datatypes::ZEL3Information)
ZEL_EXPORT_KEY(corvath::algorithm::datatypes::ZEL3Information,
               "corvath::algorithm::datatypes::AlgorithmInfo::ZEL3Information")
