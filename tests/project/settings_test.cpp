#include "design/parameters/parameter.h"
#include "project/settings/zel_classic_settings.h"
#include "project/settings/zel_combined_settings.h"
#include "support/stored_form.h"

#include <boost/serialization/variant.hpp>

namespace {

using namespace corvath::zel;
using namespace corvath::algorithm::datatypes;
using namespace corvath::math::metamodel;
using namespace support;
using Flags = std::map<std::wstring, bool>;

const auto kEqual = [](const auto& a, const auto& b) { return a == b; };
const auto kBothEqual = [](const auto& a, const auto& b) {
  EXPECT_EQ(a.IsEqual(b), a.IsNearlyEqual(b));
  return a.IsEqual(b);
};

StoredForm<MetamodelSettings> FamilyForm() {
  using S = MetamodelSettings;
  using corvath::math::metamodel::TestingType::eTestingType;
  const std::map<std::wstring, SettingValue> of_every_kind = {
      {L"real", SettingValue(0.5)},
      {L"whole", SettingValue(std::int64_t{-3})},
      {L"text", SettingValue(std::wstring(L"t"))},
      {L"flag", SettingValue(true)}};
  StoredForm<S> form(4);
  form.Field(ZEL_MEMBER(S, use_boxcox_), false).Field(ZEL_MEMBER(S, use_interpolation_), true);
  form.Field(ZEL_MEMBER(S, use_polynomials_), false).Field(ZEL_MEMBER(S, max_order_polynomial_), 3);
  form.Field(ZEL_MEMBER(S, use_MLS_), false).Field(ZEL_MEMBER(S, max_order_MLS_), 1);
  form.Field(ZEL_MEMBER(S, use_anisotropic_MLS_), true).Field(ZEL_MEMBER(S, use_Kriging_), false);
  form.Field(ZEL_MEMBER(S, use_anisotropic_Kriging_), true).Field(ZEL_MEMBER(S, use_ASCMO_), true);
  form.Field(ZEL_MEMBER(S, testing_type_), eTestingType{7});
  form.Field(ZEL_MEMBER(S, coeff_factor_poly_), 1.0, Since(1), 2.0);
  form.Field(ZEL_MEMBER(S, coeff_factor_mls_), 2.0, Since(1), 8.0);
  form.Field(ZEL_MEMBER(S, coeff_factor_kriging_), 3.0, Since(1), 8.0);
  form.Field(ZEL_MEMBER(S, coeff_factor_ASCMO_), 4.0, Since(1), 8.0);
  form.Field(ZEL_MEMBER(S, custom_), {{L"c", true}}, Since(2));
  form.Field(ZEL_MEMBER(S, use_limits_), true, Since(3));
  form.Field(ZEL_MEMBER(S, limits_), {-7.0, 7.0}, Since(3), {-HUGE_VAL, HUGE_VAL});
  form.Field(ZEL_MEMBER(S, custom_settings_), {{L"s", of_every_kind}}, Since(4));
  form.Field(ZEL_MEMBER(S, skv_variables_), {{L"v", SettingValue(3.5)}}, Since(4));
  return form;
}

StoredForm<ZELSettings> FilterForm() {
  using S = ZELSettings;
  Eigen::Matrix<std::uint64_t, Eigen::Dynamic, 1> important(2);
  important << 1, 70000;
  StoredForm<S> form(2);
  form.Part("MetamodelSettings", FamilyForm()).Field(ZEL_MEMBER(S, info_important_), important);
  form.Field(ZEL_MEMBER(S, use_significance_filter_), false);
  form.Field(ZEL_MEMBER(S, min_significance_), 0.9).Field(ZEL_MEMBER(S, step_significance_), 0.02);
  form.Field(ZEL_MEMBER(S, use_spearman_), true).Field(ZEL_MEMBER(S, use_coi_filter_), false);
  form.Field(ZEL_MEMBER(S, max_CoI_), 0.03).Field(ZEL_MEMBER(S, step_CoI_), 0.04);
  form.Field(ZEL_MEMBER(S, use_adj_cod_), false).Field(ZEL_MEMBER(S, use_cod_filter_), false);
  form.Field(ZEL_MEMBER(S, max_CoD_), 0.06).Field(ZEL_MEMBER(S, step_CoD_), 0.07);
  form.Field(ZEL_MEMBER(S, use_corr_filter_), false).Field(ZEL_MEMBER(S, num_corr_steps_), 11);
  form.Field(ZEL_MEMBER(S, toleranceCoP_model_), 0.08);
  form.Field(ZEL_MEMBER(S, toleranceCoP_variables_), 0.09);
  form.Field(ZEL_MEMBER(S, use_input_corr_filter_), true, Since(1));
  form.Field(ZEL_MEMBER(S, corr_input_check_), 0.6, Since(1), 0.5);
  form.Field(ZEL_MEMBER(S, min_input_corr_), 0.4, Since(1), 0.3);
  form.Field(ZEL_MEMBER(S, max_input_corr_), 0.8, Since(1), 0.7);
  form.Field(ZEL_MEMBER(S, use_adj_cop_), true, Since(1));
  form.Field(ZEL_MEMBER(S, use_uniform_resample_), true, Since(2));
  return form;
}

StoredForm<ZELAutomaticSettings> AutomaticForm(int reduction) {
  using S = ZELAutomaticSettings;
  StoredForm<S> form(2);
  form.Field(ZEL_MEMBER(S, model_complexity_), eModelComplexityType{5});
  form.Raw("variables_reduction_", std::int32_t{reduction}).Raw("write_cv_values_", true, Until(0));
  form.Raw("cv_values_suffix_", std::wstring(L"_old"), Until(0));
  form.Field(ZEL_MEMBER(S, num_parallel_), 6);
  return form;
}

StoredForm<ZELAdvancedSettings> AdvancedForm(const boost::filesystem::path& log_file) {
  using S = ZELAdvancedSettings;
  StoredForm<S> form(2);
  form.Field(ZEL_MEMBER(S, num_parallel_), 5).Field(ZEL_MEMBER(S, use_incomplete_), false);
  form.Field(ZEL_MEMBER(S, adapt_bounds_), false);
  form.Field(ZEL_MEMBER(S, adapt_bounds_safety_factor_), 0.5);
  form.Raw("pzel_settings_", FilterForm().Read(2));
  form.Shows([](const S& s) { return s.pzel_settings_.IsEqual(FilterForm().Read(2)); }, true);
  form.Field(ZEL_MEMBER(S, custom_surrogates_), {L"one", L"zwei \u00e4"});
  form.Field(ZEL_MEMBER(S, log_in_project_log_), true).Field(ZEL_MEMBER(S, log_in_file_), true);
  form.Field(ZEL_MEMBER(S, log_file_path_), log_file);
  form.Field(ZEL_MEMBER(S, write_function_string_), true);
  form.Field(ZEL_MEMBER(S, write_cv_values_), true).Field(ZEL_MEMBER(S, cv_values_suffix_), L"_x");
  form.Field(ZEL_MEMBER(S, zel_custom_id_settings_container_),
             {{L"id", {{L"k", CDesignEntry(L"v")}}}}, Since(1));
  form.Field(ZEL_MEMBER(S, zel_custom_id_usage_container_), {{L"id", true}}, Since(1));
  form.Field(ZEL_MEMBER(S, export_fmu_), true, Since(2));
  return form;
}

/// Fifteen fields, of the types in their order.
StoredForm<ZELClassicSettings> ClassicForm() {
  StoredForm<ZELClassicSettings> form(0);
  form.Raw("delta_cop_", 0.5);
  for (const char* name : {"signi_filter_", "corr_filter_", "coi_filter_"}) form.Raw(name, true);
  form.Raw("min_signi_quantil_", 0.25).Raw("corr_steps_", std::uint64_t{70000});
  form.Raw("max_coi_", 0.125);
  for (const char* name : {"spearman_", "adjusted_", "cross_validation_"}) form.Raw(name, true);
  form.Raw("splitting_ratio_", 0.75);
  for (const char* name : {"polynom_", "cmls_", "imls_", "adapt_bounds_"}) form.Raw(name, true);
  return form;
}

/// Version 0 held whole parameters, version 1 names without values.
StoredForm<ZELData> DataForm() {
  Parameter parameter(L"x");
  parameter.SetReferenceValue(CDesignEntry(2.5), false);
  const std::list<std::wstring> names{L"a", L"b"};
  const EntrySequence unset{{L"a", CDesignEntry()}, {L"b", CDesignEntry()}};
  const EntrySequence parameters{{L"x", CDesignEntry(2.5)}};
  const EntrySequence responses{{L"a", CDesignEntry(4.0)}, {L"b", CDesignEntry(true)}};
  using D = ZELData;
  StoredForm<D> form(4, /*restores_defaults=*/true);
  form.Raw("parameters_", std::list<Parameter>{parameter}, Until(0));
  form.Raw("parameters_", names, {1, 1});
  form.Converted(ZEL_MEMBER(D, parameters_), parameters, Since(2), Since(2));
  form.Shows(&D::parameters_, parameters, Until(0)).Shows(&D::parameters_, unset, {1, 1});
  form.Raw("responses_", responses, Until(0)).Raw("responses_", names, {1, 1});
  form.Converted(ZEL_MEMBER(D, responses_), responses, Since(2), Since(2));
  form.Shows(&D::responses_, responses, Until(0)).Shows(&D::responses_, unset, {1, 1});
  form.Field(ZEL_MEMBER(D, responses_boundaries_), {{L"a", {-1.0, 2.0}}}, Since(3));
  form.Field(ZEL_MEMBER(D, parameter_importance_), {{L"x", 3}});
  form.Field(ZEL_MEMBER(D, responses_usage_), {{L"a", false}});
  form.Field(ZEL_MEMBER(D, responses_zelability_), {{L"a", false}}, Since(4),
             {{L"a", true}, {L"b", true}});
  return form;
}

TEST(Settings, OfEveryVersionAreReadCopiedAndTold) {
  FamilyForm().Check(kBothEqual);
  FilterForm().Check(kBothEqual);
  for (const auto& [stored, swapped] : {std::pair{0, 0}, {1, 2}, {2, 1}, {3, 3}}) {
    auto form = AutomaticForm(stored);
    form.Shows(&ZELAutomaticSettings::variables_reduction_, eVariableReductionType{swapped},
               Until(1));
    form.Shows(&ZELAutomaticSettings::variables_reduction_, eVariableReductionType{stored},
               Since(2));
    form.Check(kEqual);
  }
  AdvancedForm("dir/log").Check(kEqual);
  DataForm().Check(kEqual);

  using S = ZELCombinedSettings;
  StoredForm<S> form(2);
  form.Field(ZEL_MEMBER(S, settings_type_), eSettingsType{2});
  form.Field(ZEL_MEMBER(S, data_), DataForm().Read(4)).Field(ZEL_MEMBER(S, show_pp_), true);
  form.Field(ZEL_MEMBER(S, automatic_settings_), AutomaticForm(1).Read(2));
  const auto classic = ClassicForm();
  form.Raw("classic_settings_", classic.As(0), Until(0));
  form.Field(ZEL_MEMBER(S, advanced_settings_), AdvancedForm("dir/log").Read(2));
  form.Field(ZEL_MEMBER(S, default_parameter_bounds_adjustment_min_), 0.02);
  form.Field(ZEL_MEMBER(S, default_parameter_bounds_adjustment_max_), 0.03);
  form.Field(ZEL_MEMBER(S, limits_), {{L"a", {0.0, 1.0}}}, Since(2));
  form.Check(kEqual);
}

TEST(Settings, AnEmptyLogFileOfVersion0GetsTheDefaultName) {
  EXPECT_EQ(AdvancedForm("").Read(0).log_file_path_, "message_log.txt");
  EXPECT_EQ(AdvancedForm("").Read(1).log_file_path_, "");
}

TEST(Settings, CompareExactlyOrNearly) {
  const ZELSettings settings = FilterForm().Read(2);
  EXPECT_FALSE(MetamodelSettings().IsEqual(ZELSettings()));  // another class, whichever asks
  EXPECT_FALSE(ZELSettings().IsEqual(MetamodelSettings()));

  constexpr double kUlp = 0x1p-52;  // neighbours of these numbers are less apart
  const std::pair<void (*)(ZELSettings&), bool> cases[] = {
      {[](ZELSettings& s) { s.max_CoI_ = std::nextafter(0.03, 1.0); }, true},
      {[](ZELSettings& s) { s.max_CoI_ *= 1.0 + 4 * kUlp; }, false},
      {[](ZELSettings& s) { s.max_CoI_ = -s.max_CoI_; }, false},
      {[](ZELSettings& s) { s.skv_variables_[L"v"] = std::nextafter(3.5, 4.0); }, true},
      {[](ZELSettings& s) { s.skv_variables_[L"v"] = true; }, false},
      {[](ZELSettings& s) { s.skv_variables_[L"w"] = 3.5; }, false},
      {[](ZELSettings& s) { s.info_important_(1) += 1; }, false},
      {[](ZELSettings& s) { s.limits_.second = std::nextafter(7.0, 8.0); }, true},
  };
  for (const auto& one : cases) {
    ZELSettings changed = settings;
    one.first(changed);
    EXPECT_FALSE(settings.IsEqual(changed)) << &one - cases;
    EXPECT_EQ(settings.IsNearlyEqual(changed), one.second) << &one - cases;
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
