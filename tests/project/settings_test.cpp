#include "design/parameter.h"
#include "project/settings/zel_combined_settings.h"
#include "support/archive_round_trip.h"
#include "support/stand_in.h"

#include <boost/serialization/variant.hpp>
#include <gtest/gtest.h>

namespace {

using namespace corvath::zel;
using corvath::portable_binary_oarchive;
using corvath::algorithm::datatypes::CDesignEntry;
using corvath::algorithm::datatypes::EntrySequence;
using corvath::algorithm::datatypes::Parameter;
using corvath::math::metamodel::MetamodelSettings;
using corvath::math::metamodel::SettingValue;
using corvath::math::metamodel::ZELSettings;
using support::Load;
using support::Put;
using support::Save;
using support::StandIn;
using Limits = std::map<std::wstring, std::pair<double, double>>;
using Flags = std::map<std::wstring, bool>;

template <int Version>
StandIn<struct MetamodelTag, Version, true> StoredMetamodel(const MetamodelSettings& s) {
  return {[&s](portable_binary_oarchive& ar) {
    Put(ar, "use_boxcox_", s.use_boxcox_);
    Put(ar, "use_interpolation_", s.use_interpolation_);
    Put(ar, "use_polynomials_", s.use_polynomials_);
    Put(ar, "max_order_polynomial_", s.max_order_polynomial_);
    Put(ar, "use_MLS_", s.use_MLS_);
    Put(ar, "max_order_MLS_", s.max_order_MLS_);
    Put(ar, "use_anisotropic_MLS_", s.use_anisotropic_MLS_);
    Put(ar, "use_Kriging_", s.use_Kriging_);
    Put(ar, "use_anisotropic_Kriging_", s.use_anisotropic_Kriging_);
    Put(ar, "use_ASCMO_", s.use_ASCMO_);
    Put(ar, "testing_type_", std::int32_t{s.testing_type_});
    if (Version >= 1) {
      Put(ar, "coeff_factor_poly_", s.coeff_factor_poly_);
      Put(ar, "coeff_factor_mls_", s.coeff_factor_mls_);
      Put(ar, "coeff_factor_kriging_", s.coeff_factor_kriging_);
      Put(ar, "coeff_factor_ASCMO_", s.coeff_factor_ASCMO_);
    }
    if (Version >= 2) Put(ar, "custom_", s.custom_);
    if (Version >= 3) {
      Put(ar, "use_limits_", s.use_limits_);
      Put(ar, "limits_", s.limits_);
    }
    if (Version >= 4) {
      Put(ar, "custom_settings_", s.custom_settings_);
      Put(ar, "skv_variables_", s.skv_variables_);
    }
  }};
}

template <int Version, int BaseVersion>
StandIn<struct FilterTag, Version, true> StoredFilters(const ZELSettings& s) {
  return {[&s](portable_binary_oarchive& ar) {
    Put(ar, "MetamodelSettings", StoredMetamodel<BaseVersion>(s));
    Put(ar, "info_important_", s.info_important_);
    Put(ar, "use_significance_filter_", s.use_significance_filter_);
    Put(ar, "min_significance_", s.min_significance_);
    Put(ar, "step_significance_", s.step_significance_);
    Put(ar, "use_spearman_", s.use_spearman_);
    Put(ar, "use_coi_filter_", s.use_coi_filter_);
    Put(ar, "max_CoI_", s.max_CoI_);
    Put(ar, "step_CoI_", s.step_CoI_);
    Put(ar, "use_adj_cod_", s.use_adj_cod_);
    Put(ar, "use_cod_filter_", s.use_cod_filter_);
    Put(ar, "max_CoD_", s.max_CoD_);
    Put(ar, "step_CoD_", s.step_CoD_);
    Put(ar, "use_corr_filter_", s.use_corr_filter_);
    Put(ar, "num_corr_steps_", s.num_corr_steps_);
    Put(ar, "toleranceCoP_model_", s.toleranceCoP_model_);
    Put(ar, "toleranceCoP_variables_", s.toleranceCoP_variables_);
    if (Version >= 1) {
      Put(ar, "use_input_corr_filter_", s.use_input_corr_filter_);
      Put(ar, "corr_input_check_", s.corr_input_check_);
      Put(ar, "min_input_corr_", s.min_input_corr_);
      Put(ar, "max_input_corr_", s.max_input_corr_);
      Put(ar, "use_adj_cop_", s.use_adj_cop_);
    }
    if (Version >= 2) Put(ar, "use_uniform_resample_", s.use_uniform_resample_);
  }};
}

template <int Version>
StandIn<struct AutomaticTag, Version, true> StoredAutomatic(std::int32_t complexity,
                                                            std::int32_t reduction,
                                                            std::uint64_t num_parallel) {
  return {[=](portable_binary_oarchive& ar) {
    Put(ar, "model_complexity_", complexity);
    Put(ar, "variables_reduction_", reduction);
    if (Version == 0) {
      Put(ar, "write_cv_values_", true);
      Put(ar, "cv_values_suffix_", std::wstring(L"_old"));
    }
    Put(ar, "num_parallel_", num_parallel);
  }};
}

template <int Version>
StandIn<struct AdvancedTag, Version, true> StoredAdvanced(const ZELAdvancedSettings& s) {
  return {[&s](portable_binary_oarchive& ar) {
    Put(ar, "num_parallel_", s.num_parallel_);
    Put(ar, "use_incomplete_", s.use_incomplete_);
    Put(ar, "adapt_bounds_", s.adapt_bounds_);
    Put(ar, "adapt_bounds_safety_factor_", s.adapt_bounds_safety_factor_);
    Put(ar, "pzel_settings_", StoredFilters<2, 4>(s.pzel_settings_));
    Put(ar, "custom_surrogates_", s.custom_surrogates_);
    Put(ar, "log_in_project_log_", s.log_in_project_log_);
    Put(ar, "log_in_file_", s.log_in_file_);
    Put(ar, "log_file_path_", s.log_file_path_);
    Put(ar, "write_function_string_", s.write_function_string_);
    Put(ar, "write_cv_values_", s.write_cv_values_);
    Put(ar, "cv_values_suffix_", s.cv_values_suffix_);
    if (Version >= 1) {
      Put(ar, "zel_custom_id_settings_container_", s.zel_custom_id_settings_container_);
      Put(ar, "zel_custom_id_usage_container_", s.zel_custom_id_usage_container_);
    }
    if (Version >= 2) Put(ar, "export_fmu_", s.export_fmu_);
  }};
}

/// `parameters` and `responses` are what the class version stores under these keys.
template <int Version, class Parameters, class Responses>
StandIn<struct DataTag, Version, true> StoredData(const Parameters& parameters,
                                                  const Responses& responses, const ZELData& rest) {
  return {[&](portable_binary_oarchive& ar) {
    Put(ar, "parameters_", parameters);
    Put(ar, "responses_", responses);
    if (Version >= 3) Put(ar, "responses_boundaries_", rest.responses_boundaries_);
    Put(ar, "parameter_importance_", rest.parameter_importance_);
    Put(ar, "responses_usage_", rest.responses_usage_);
    if (Version >= 4) Put(ar, "responses_zelability_", rest.responses_zelability_);
  }};
}

/// Fifteen fields, of the types in their order.
StandIn<struct ClassicTag, 0, true> StoredClassic() {
  return {[](portable_binary_oarchive& ar) {
    Put(ar, "delta_cop_", 0.5);
    Put(ar, "signi_filter_", true);
    Put(ar, "corr_filter_", true);
    Put(ar, "coi_filter_", true);
    Put(ar, "min_signi_quantil_", 0.25);
    Put(ar, "corr_steps_", std::uint64_t{70000});
    Put(ar, "max_coi_", 0.125);
    for (const char* name : {"spearman_", "adjusted_", "cross_validation_"}) Put(ar, name, true);
    Put(ar, "splitting_ratio_", 0.75);
    for (const char* name : {"polynom_", "cmls_", "imls_", "adapt_bounds_"}) Put(ar, name, true);
  }};
}

template <int Version>
StandIn<struct CombinedTag, Version, true> StoredCombined(const ZELCombinedSettings& s) {
  return {[&s](portable_binary_oarchive& ar) {
    Put(ar, "settings_type_", std::int32_t{s.settings_type_});
    Put(ar, "data_", StoredData<4>(s.data_.parameters_, s.data_.responses_, s.data_));
    Put(ar, "show_pp_", s.show_pp_);
    Put(ar, "automatic_settings_",
        StoredAutomatic<2>(s.automatic_settings_.model_complexity_,
                           s.automatic_settings_.variables_reduction_,
                           s.automatic_settings_.num_parallel_));
    if (Version == 0) Put(ar, "classic_settings_", StoredClassic());
    Put(ar, "advanced_settings_", StoredAdvanced<2>(s.advanced_settings_));
    Put(ar, "default_parameter_bounds_adjustment_min_", s.default_parameter_bounds_adjustment_min_);
    Put(ar, "default_parameter_bounds_adjustment_max_", s.default_parameter_bounds_adjustment_max_);
    if (Version >= 2) Put(ar, "limits_", s.limits_);
  }};
}

/// Settings in which no field of any class has its default.
ZELCombinedSettings UnusualSettings() {
  ZELCombinedSettings settings(eSettingsType{2});
  settings.data_.parameters_ = {{L"x", CDesignEntry(1.5)}};
  settings.data_.responses_ = {{L"a", CDesignEntry()}, {L"b", CDesignEntry(true)}};
  settings.data_.responses_boundaries_ = {{L"a", {-1.0, 2.0}}};
  settings.data_.parameter_importance_ = {{L"x", 3}};
  settings.data_.responses_usage_ = {{L"a", false}};
  settings.data_.responses_zelability_ = {{L"a", false}};
  settings.show_pp_ = true;
  settings.automatic_settings_ = {eModelComplexityType{3}, eVariableReductionType{1}, 9};
  settings.default_parameter_bounds_adjustment_min_ = 0.02;
  settings.default_parameter_bounds_adjustment_max_ = 0.03;
  settings.limits_ = {{L"a", {0.0, 1.0}}};

  ZELAdvancedSettings& advanced = settings.advanced_settings_;
  advanced.num_parallel_ = 5;
  advanced.use_incomplete_ = advanced.adapt_bounds_ = false;
  advanced.adapt_bounds_safety_factor_ = 0.5;
  advanced.custom_surrogates_ = {L"one", L"zwei \u00e4"};
  advanced.log_in_project_log_ = advanced.log_in_file_ = true;
  advanced.log_file_path_ = "dir/log";
  advanced.write_function_string_ = advanced.write_cv_values_ = advanced.export_fmu_ = true;
  advanced.cv_values_suffix_ = L"_x";
  advanced.zel_custom_id_settings_container_ = {{L"id", {{L"k", CDesignEntry(L"v")}}}};
  advanced.zel_custom_id_usage_container_ = {{L"id", true}};

  ZELSettings& filters = advanced.pzel_settings_;
  filters.use_boxcox_ = filters.use_polynomials_ = filters.use_MLS_ = filters.use_Kriging_ = false;
  filters.use_interpolation_ = filters.use_anisotropic_MLS_ = filters.use_anisotropic_Kriging_ =
      filters.use_ASCMO_ = filters.use_limits_ = true;
  filters.max_order_polynomial_ = 3;
  filters.max_order_MLS_ = 1;
  filters.testing_type_ = corvath::math::metamodel::TestingType::eTestingType{7};
  filters.coeff_factor_poly_ = 1.0;
  filters.coeff_factor_mls_ = 2.0;
  filters.coeff_factor_kriging_ = 3.0;
  filters.coeff_factor_ASCMO_ = 4.0;
  filters.custom_ = {{L"c", true}};
  filters.limits_ = {-7.0, 7.0};
  filters.custom_settings_ = {{L"s",
                               {{L"real", SettingValue(0.5)},
                                {L"whole", SettingValue(std::int64_t{-3})},
                                {L"text", SettingValue(std::wstring(L"t"))},
                                {L"flag", SettingValue(true)}}}};
  filters.skv_variables_ = {{L"v", SettingValue(3.5)}};
  filters.info_important_.resize(2);
  filters.info_important_ << 1, 70000;
  filters.use_significance_filter_ = filters.use_coi_filter_ = filters.use_adj_cod_ =
      filters.use_cod_filter_ = filters.use_corr_filter_ = false;
  filters.use_spearman_ = filters.use_input_corr_filter_ = filters.use_adj_cop_ =
      filters.use_uniform_resample_ = true;
  filters.min_significance_ = 0.9;
  filters.step_significance_ = 0.02;
  filters.max_CoI_ = 0.03;
  filters.step_CoI_ = 0.04;
  filters.max_CoD_ = 0.06;
  filters.step_CoD_ = 0.07;
  filters.num_corr_steps_ = 11;
  filters.toleranceCoP_model_ = 0.08;
  filters.toleranceCoP_variables_ = 0.09;
  filters.corr_input_check_ = 0.6;
  filters.min_input_corr_ = 0.4;
  filters.max_input_corr_ = 0.8;
  return settings;
}

TEST(Settings, AreStoredFieldByFieldUnderTheirKeys) {
  const ZELCombinedSettings settings = UnusualSettings();
  const std::string bytes = Save(settings);
  EXPECT_EQ(bytes, Save(StoredCombined<2>(settings)));
  const auto loaded = Load<ZELCombinedSettings>(bytes);
  EXPECT_TRUE(loaded == settings);
  EXPECT_EQ(Save(loaded), bytes);
  EXPECT_FALSE(ZELCombinedSettings() == settings);
}

TEST(Settings, CombinedOfVersion0SkipsTheClassicFields) {
  ZELCombinedSettings settings = UnusualSettings();
  const auto loaded = Load<ZELCombinedSettings>(Save(StoredCombined<0>(settings)));
  settings.limits_.clear();
  EXPECT_TRUE(loaded == settings);
  EXPECT_TRUE(Load<ZELCombinedSettings>(Save(StoredCombined<1>(UnusualSettings()))) == settings);
}

TEST(Settings, OlderFiltersAndFamiliesHaveDefaultsForWhatTheyLack) {
  const ZELSettings unusual = UnusualSettings().advanced_settings_.pzel_settings_;
  const auto old = Load<ZELSettings>(Save(StoredFilters<0, 0>(unusual)));
  EXPECT_EQ(old.coeff_factor_poly_, 2.0);
  EXPECT_EQ(old.coeff_factor_mls_, 8.0);
  EXPECT_EQ(old.coeff_factor_kriging_, 8.0);
  EXPECT_EQ(old.coeff_factor_ASCMO_, 8.0);
  EXPECT_TRUE(old.custom_.empty());
  EXPECT_EQ(old.limits_, MetamodelSettings().limits_);
  EXPECT_EQ(old.corr_input_check_, 0.5);
  EXPECT_EQ(old.min_input_corr_, 0.3);
  EXPECT_EQ(old.max_input_corr_, 0.7);
  EXPECT_FALSE(old.use_input_corr_filter_ || old.use_adj_cop_ || old.use_uniform_resample_);
  EXPECT_EQ(old.toleranceCoP_variables_, 0.09);  // the last that version 0 stores

  const auto newer = Load<ZELSettings>(Save(StoredFilters<1, 3>(unusual)));
  EXPECT_EQ(newer.max_input_corr_, 0.8);
  EXPECT_EQ(newer.limits_, unusual.limits_);
  EXPECT_TRUE(newer.custom_settings_.empty() && newer.skv_variables_.empty());
}

TEST(Settings, OldVariableReductionsOneAndTwoAreSwapped) {
  for (const auto& [stored, expected] : {std::pair{0, 0}, {1, 2}, {2, 1}, {3, 3}}) {
    const auto of_0 = Load<ZELAutomaticSettings>(Save(StoredAutomatic<0>(5, stored, 6)));
    const auto of_1 = Load<ZELAutomaticSettings>(Save(StoredAutomatic<1>(5, stored, 6)));
    const auto of_2 = Load<ZELAutomaticSettings>(Save(StoredAutomatic<2>(5, stored, 6)));
    EXPECT_EQ(of_0.variables_reduction_, expected);
    EXPECT_EQ(of_1.variables_reduction_, expected);
    EXPECT_EQ(of_2.variables_reduction_, stored);
    for (const auto& settings : {of_0, of_1, of_2}) {
      EXPECT_EQ(settings.model_complexity_, 5);
      EXPECT_EQ(settings.num_parallel_, 6u);
    }
  }
}

TEST(Settings, AnEmptyLogFileOfVersion0GetsTheDefaultName) {
  ZELAdvancedSettings settings = UnusualSettings().advanced_settings_;
  settings.log_file_path_.clear();
  EXPECT_EQ(Load<ZELAdvancedSettings>(Save(StoredAdvanced<0>(settings))).log_file_path_,
            "message_log.txt");
  EXPECT_EQ(Load<ZELAdvancedSettings>(Save(StoredAdvanced<1>(settings))).log_file_path_, "");
  const auto old = Load<ZELAdvancedSettings>(Save(StoredAdvanced<0>(settings)));
  EXPECT_TRUE(old.zel_custom_id_settings_container_.empty());
  EXPECT_FALSE(old.export_fmu_);
}

TEST(Settings, OlderDataComeFromParametersOrNames) {
  ZELData rest;
  rest.responses_usage_ = {{L"a", true}};
  rest.responses_boundaries_ = {{L"a", {1.0, 2.0}}};
  const EntrySequence responses{{L"a", CDesignEntry(4.0)}, {L"b", CDesignEntry()}};
  const Flags both{{L"a", true}, {L"b", true}};

  Parameter parameter(L"x");
  parameter.SetReferenceValue(CDesignEntry(2.5), false);
  const std::list<Parameter> parameters{parameter};
  const auto of_0 = Load<ZELData>(Save(StoredData<0>(parameters, responses, rest)));
  EXPECT_TRUE(of_0.parameters_ == (EntrySequence{{L"x", CDesignEntry(2.5)}}));
  EXPECT_TRUE(of_0.responses_ == responses);

  const std::list<std::wstring> names{L"a", L"b"};
  const auto of_1 = Load<ZELData>(Save(StoredData<1>(names, names, rest)));
  const EntrySequence unset{{L"a", CDesignEntry()}, {L"b", CDesignEntry()}};
  EXPECT_TRUE(of_1.parameters_ == unset);
  EXPECT_TRUE(of_1.responses_ == unset);

  const auto of_2 = Load<ZELData>(Save(StoredData<2>(unset, responses, rest)));
  const auto of_3 = Load<ZELData>(Save(StoredData<3>(unset, responses, rest)));
  EXPECT_TRUE(of_2.responses_boundaries_.empty());
  EXPECT_EQ(of_3.responses_boundaries_, rest.responses_boundaries_);
  for (const auto& data : {of_0, of_1, of_2, of_3}) {
    EXPECT_EQ(data.responses_zelability_, both);
    EXPECT_EQ(data.responses_usage_, rest.responses_usage_);
  }
}

TEST(Settings, CompareExactlyOrNearly) {
  const ZELSettings settings = UnusualSettings().advanced_settings_.pzel_settings_;
  const auto copy = settings.Clone();
  ASSERT_TRUE(dynamic_cast<const ZELSettings*>(copy.get()));
  EXPECT_TRUE(settings.IsEqual(*copy));
  EXPECT_TRUE(settings.IsNearlyEqual(*copy));
  EXPECT_FALSE(MetamodelSettings().IsEqual(ZELSettings()));  // another class, whichever asks
  EXPECT_FALSE(ZELSettings().IsEqual(MetamodelSettings()));

  constexpr double kUlp = 0x1p-52;  // neighbours of these numbers are less apart
  struct Case {
    void (*change)(ZELSettings&);
    bool nearly;
  };
  const Case cases[] = {
      {[](ZELSettings& s) { s.max_CoI_ = std::nextafter(0.03, 1.0); }, true},
      {[](ZELSettings& s) { s.max_CoI_ *= 1.0 + 4 * kUlp; }, false},
      {[](ZELSettings& s) { s.max_CoI_ = -s.max_CoI_; }, false},
      {[](ZELSettings& s) { s.coeff_factor_mls_ = std::nextafter(2.0, 0.0); }, true},
      {[](ZELSettings& s) { s.skv_variables_[L"v"] = std::nextafter(3.5, 4.0); }, true},
      {[](ZELSettings& s) { s.skv_variables_[L"v"] = true; }, false},
      {[](ZELSettings& s) { s.skv_variables_[L"w"] = 3.5; }, false},
      {[](ZELSettings& s) { s.info_important_(1) += 1; }, false},
      {[](ZELSettings& s) { s.info_important_.resize(0); }, false},
      {[](ZELSettings& s) { s.num_corr_steps_ += 1; }, false},
      {[](ZELSettings& s) { s.limits_.second = std::nextafter(7.0, 8.0); }, true},
  };
  for (const Case& c : cases) {
    ZELSettings changed = settings;
    c.change(changed);
    EXPECT_FALSE(settings.IsEqual(changed)) << &c - cases;
    EXPECT_EQ(settings.IsNearlyEqual(changed), c.nearly) << &c - cases;
  }

  ZELSettings flipped;
  std::swap(flipped.limits_.first, flipped.limits_.second);
  EXPECT_TRUE(ZELSettings().IsNearlyEqual(flipped));  // infinite limits, of any sign
  EXPECT_FALSE(ZELSettings().IsEqual(flipped));
  flipped.limits_.first = std::nan("");
  EXPECT_FALSE(flipped.IsNearlyEqual(flipped));
  EXPECT_FALSE(flipped.IsEqual(flipped));
}

}  // namespace
