#include "training/settings_record.h"

#include <algorithm>

namespace corvath::training {

math::metamodel::ZELSettings RecordOf(const TrainSettings& settings) {
  math::metamodel::ZELSettings record;
  const ModelChoice& models = settings.models;
  record.use_boxcox_ = models.box_cox;
  record.use_polynomials_ = models.polynomials;
  record.max_order_polynomial_ = models.max_polynomial_order;
  record.use_MLS_ = models.moving_least_squares;
  record.max_order_MLS_ = models.max_moving_least_squares_order;
  record.use_Kriging_ = models.isotropic_kriging;
  record.use_anisotropic_Kriging_ = models.anisotropic_kriging;
  record.coeff_factor_poly_ = models.designs_per_coefficient;
  record.coeff_factor_mls_ = models.designs_per_coefficient_of_local_models;
  record.coeff_factor_kriging_ = models.designs_per_coefficient_of_local_models;
  record.use_limits_ = models.limits.has_value();
  if (models.limits) record.limits_ = *models.limits;

  const InputFilters& filters = settings.filters;
  record.info_important_.resize(static_cast<Eigen::Index>(filters.always.size()));
  std::copy(filters.always.begin(), filters.always.end(), record.info_important_.begin());
  record.use_significance_filter_ = filters.by_significance;
  record.min_significance_ = filters.min_significance;
  record.step_significance_ = filters.significance_step;
  record.use_corr_filter_ = filters.by_correlation;
  record.num_corr_steps_ = filters.correlation_steps;
  record.use_spearman_ = filters.rank_correlation;
  record.use_coi_filter_ = filters.by_importance;
  record.max_CoI_ = filters.importance.largest;
  record.step_CoI_ = filters.importance.step;
  record.use_cod_filter_ = filters.by_quality;
  record.max_CoD_ = filters.quality.largest;
  record.step_CoD_ = filters.quality.step;
  record.use_adj_cod_ = filters.adjusted_determination;
  record.toleranceCoP_variables_ = filters.spared_cop;
  record.use_adj_cop_ = settings.adjusted_cop;
  return record;
}

}  // namespace corvath::training
