#pragma once

#include "project/settings/metamodel_settings.h"

namespace corvath::math::metamodel {

/// Filters that decide which inputs enter a model.
class ZELSettings : public MetamodelSettings {
 public:
  std::unique_ptr<MetamodelSettings> Clone() const override;
  bool IsNearlyEqual(const MetamodelSettings& other) const override;
  bool IsEqual(const MetamodelSettings& other) const override;

  Eigen::Matrix<std::uint64_t, Eigen::Dynamic, 1> info_important_;
  bool use_significance_filter_ = true;
  double min_significance_ = 0.95;
  double step_significance_ = 0.01;
  bool use_spearman_ = false;
  bool use_coi_filter_ = true;
  double max_CoI_ = 0.05;
  double step_CoI_ = 0.01;
  bool use_adj_cod_ = true;
  bool use_cod_filter_ = true;
  double max_CoD_ = 0.05;
  double step_CoD_ = 0.01;
  bool use_corr_filter_ = true;
  std::uint64_t num_corr_steps_ = 10;
  double toleranceCoP_model_ = 0.01;
  double toleranceCoP_variables_ = 0.01;
  bool use_input_corr_filter_ = false;
  double corr_input_check_ = 0.5;
  double min_input_corr_ = 0.3;
  double max_input_corr_ = 0.7;
  bool use_adj_cop_ = false;
  bool use_uniform_resample_ = false;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

}  // namespace corvath::math::metamodel

ZEL_CLASS_VERSION(corvath::math::metamodel::ZELSettings, 2)
ZEL_EXPORT_KEY(corvath::math::metamodel::ZELSettings, "::corvath::math::metamodel::ZELSettings")
