// The stored forms of parameters, designs and their parts, of every class version.

#include "design/designs/design_manager.h"
#include "design/designs/flat_design.h"
#include "design/parameters/parameter_manager.h"
#include "support/stored_form.h"
#include "support/values.h"

namespace {

using namespace corvath::algorithm::datatypes;
using namespace support;
using Kind = corvath::enums::DeterministicProperties;
using Type = corvath::enums::DesignEntry;

const auto kEqual = [](const auto& a, const auto& b) { return a == b; };

boost::uuids::uuid Uuid(unsigned char first) {
  boost::uuids::uuid id{};
  for (unsigned char& byte : id) byte = first++;
  return id;
}

StoredForm<RandomProperties, false> RandomForm() {
  using Moments = std::vector<double>;
  StoredForm<RandomProperties, false> form(4);
  form.Field("type_", &RandomProperties::GetType, corvath::enums::RandomVariable::LOGNORMAL);
  form.Field("kind_", &RandomProperties::GetKind, 3);
  form.Field("params_", &RandomProperties::GetParams, Moments{0.25, 0.5}, {}, {0.25, 0.75});
  form.Field("moments_", &RandomProperties::GetMoments, Moments{1.5, 2.5}, {}, {1.25, 2.5});
  form.Field("has_set_cov_", &RandomProperties::HasCov, true, Since(3));
  form.Field(
      "cov_", [](const RandomProperties& p) { return p.HasCov() ? p.GetCov() : 0.0; }, 0.125,
      Since(3));
  form.Uncompared("validated_", &RandomProperties::IsValidated, false, Since(4), true);
  form.Raw("pdf_coords_", std::vector<std::pair<double, double>>{{1.0, 2.0}, {3.0, 4.0}}, Until(1));
  return form;
}

StoredForm<DeterministicProperties, false> DeterministicForm() {
  using P = DeterministicProperties;
  StoredForm<P, false> form(1);
  form.Field("ordered_flag_", &P::GetKind, Kind::ORDINAL_BY_INDEX);
  form.Field("domain_flag_", &P::GetDataType, Type::STRING);
  form.Field("lower_bound_", &P::GetLowerBound, CDesignEntry(0));
  form.Field("upper_bound_", &P::GetUpperBound, CDesignEntry(1));
  form.Field("discrete_states_", &P::GetDiscreteStates,
             {CDesignEntry(L"bronze"), CDesignEntry(L"steel")});
  form.Field("lower_bound_relative_", &P::GetLowerBoundRelative, CDesignEntry(-0.5), Since(1));
  form.Field("upper_bound_relative_", &P::GetUpperBoundRelative, CDesignEntry(0.5), Since(1));
  return form;
}

StoredForm<Parameter, false> ParameterForm() {
  StoredForm<Parameter, false> form(7);
  form.Field("name_", &Parameter::GetName, L"Breite \u00b5");
  form.Field("active_", &Parameter::IsActive, false).Field("const_", &Parameter::IsConst, true);
  form.Field("rprop_", &Parameter::GetRandomProperties, RandomForm().Read(4));
  form.Field("dprops_", &Parameter::GetDeterministicProperties,
             {{L"Breite \u00b5", DeterministicForm().Read(1)}});
  form.Field("reference_value_", &Parameter::GetReferenceValue, CDesignEntry(L"steel"));
  form.Field("mutable_map_", &Parameter::GetMutableMembers,
             {{kFirstMutableMember, true}, {MutableMember(7), false}}, Since(1));
  form.Field("dependency_expression_", &Parameter::GetDependencyExpression, L"a + b", Since(2));
  form.Raw("id_", Uuid(1), Since(3)).Field("modifiable_", &Parameter::IsModifiable, true, Since(4));
  form.Field("unit_", &Parameter::GetUnit, L"mm", Since(5));
  form.Field("removable_", &Parameter::IsRemovable, false, Since(6), true);
  form.Raw("origin_", Uuid(101), Since(7));
  // Without a stored identity the parameter keeps its own, and stems from itself.
  form.Shows([](const Parameter& p) { return p.GetId().is_nil(); }, false, Until(2));
  form.Shows(&Parameter::GetId, Uuid(1), Since(3));
  form.Shows([](const Parameter& p) { return p.GetOrigin() == p.GetId(); }, true, Until(6));
  form.Shows(&Parameter::GetOrigin, Uuid(101), Since(7));
  return form;
}

Criterion MakeCriterion() {
  Criterion criterion(CriterionDescription::RHS_MINUS_LHS, L"a", L"b");
  criterion.SetValues(CDesignEntry(2.0), CDesignEntry(3.0), CDesignEntry(1.0), false);
  return criterion;
}

RunInfoContainer Messages(const RunInfoMeta& message) {
  RunInfoContainer messages;
  messages.Add(message);
  return messages;
}

StoredForm<Design, false> DesignForm() {
  EntrySequence responses = {{L"r", CDesignEntry(support::Scalar(2.5))}};
  VariantSequence variants;
  variants.Append(L"r", support::Scalar(2.5));
  const EntrySequence from_variants = responses;
  responses.SetHeader(9);
  StoredForm<Design, false> form(6, /*restores_defaults=*/true);
  form.Field("parameters_", ZEL_SHOWN_BY(GetParameters()),
             {{L"x", CDesignEntry(1.0)}, {L"y", CDesignEntry(L"steel")}});
  form.Raw("responses_", variants, Until(2));
  form.Field("responses_", ZEL_SHOWN_BY(GetResponses()), responses, Since(3), from_variants);
  form.Raw("status_", std::int32_t{RunInfoMeta::RUNNING}, Until(0));
  form.Field("status_", ZEL_SHOWN_BY(GetStatus()),
             Messages({RunInfoMeta::UNUSABLE_RESPONSE, L"step", L"r", {L"a", L"b"}}), Since(1),
             Messages(RunInfoMeta(RunInfoMeta::RUNNING)));
  form.Field("runstate_", &Design::GetRunState, Design::FINISHED, Since(1), Design::RUNNING);
  form.Field("duplicates_", &Design::GetDuplicates, DesignId(4), Since(2), DesignId(0));
  form.Field("activation_state_", &Design::GetActivationState, Design::eActivationStatus(2));
  form.Field("criteria_", ZEL_SHOWN_BY(GetCriteria()), {{L"c", MakeCriterion()}});
  form.Field("isapproximated_", &Design::IsApproximated, true);
  form.Field("id_", &Design::GetId, DesignId(12).Appended(3));
  form.Field("iteration_", &Design::GetIteration, DesignId(5), Since(4), DesignId(0));
  form.Field("workflow_id_", &Design::GetWorkflowId, 6, Since(5), 22);
  form.Field("type_", &Design::GetType, corvath::enums::DesignTypes::eType(7), Since(5),
             corvath::enums::DesignTypes::UNSPECIFIED);
  form.Field("algo_iteration_", &Design::GetAlgoIteration, 8, Since(6));
  return form;
}

}  // namespace

TEST(StoredForms, OfParametersAndTheirSides) {
  RandomForm().Check(kEqual);
  DeterministicForm().Check(kEqual);
  ParameterForm().Check(kEqual);

  StoredForm<TriangularIndex, false> pair(0);
  pair.Field("first_", &TriangularIndex::GetFirst, L"Breite \u00b5");
  pair.Field("second_", &TriangularIndex::GetSecond, L"a");
  pair.Check(kEqual);
  StoredForm<CorrelationMatrix, false> matrix(0);
  matrix.Field("matrix_", &CorrelationMatrix::GetEntries, {{pair.Read(0), -0.5}});
  matrix.Check();
  StoredForm<ParameterManager, false> manager(1, /*restores_defaults=*/true);
  manager.Field("parameters_", &ParameterManager::GetAllParameters, {ParameterForm().Read(7)});
  manager.Field("coherences_", ZEL_SHOWN_BY(GetCoherences()), matrix.Read(0), Since(1));
  manager.Check(kEqual);
}

TEST(StoredForms, OfCriteria) {
  using D = CriterionDescription;
  StoredForm<D, false> description(0);
  description.Field(ZEL_MEMBER(D, type_), D::RHS_MINUS_LHS).Field(ZEL_MEMBER(D, lhs_), L"a");
  description.Field(ZEL_MEMBER(D, rhs_), L"b");
  description.Check(kEqual);
  using V = CriterionValue;
  StoredForm<V, false> value(0);
  value.Field(ZEL_MEMBER(V, value_), CDesignEntry(1.0));
  value.Field(ZEL_MEMBER(V, lhs_value_), CDesignEntry(2.0));
  value.Field(ZEL_MEMBER(V, rhs_value_), CDesignEntry(3.0)).Field(ZEL_MEMBER(V, needeval_), false);
  value.Check(kEqual);

  // Below version 3 one flat record, for a while without the values of the sides.
  StoredForm<Criterion, false> form(3, /*restores_defaults=*/true);
  form.Raw("type_", D::RHS_MINUS_LHS, Until(2)).Raw("value_", CDesignEntry(1.0), Until(2));
  form.Raw("lhs_", std::wstring(L"a"), Until(2)).Raw("rhs_", std::wstring(L"b"), Until(2));
  form.Raw("needeval_", false, Until(2)).Raw("skv3_converted_", true, {1, 2});
  form.Raw("lhs_value_", CDesignEntry(2.0), {2, 2}).Raw("rhs_value_", CDesignEntry(3.0), {2, 2});
  V without_sides = value.Read(0);
  without_sides.lhs_value_ = without_sides.rhs_value_ = CDesignEntry();
  form.Converted("CriterionDescription", &Criterion::GetDescription, description.Read(0), Since(3));
  form.Converted("CriterionValue", &Criterion::GetValues, value.Read(0), Since(3), Since(2));
  form.Shows(&Criterion::GetValues, without_sides, Until(1));
  form.Check(kEqual);
}

TEST(StoredForms, OfDesigns) {
  using Elements = std::vector<EntrySequence::value_type>;
  const Elements elements = {{L"b", CDesignEntry(1)}, {L"a", CDesignEntry(2)}};
  StoredForm<EntrySequence, false> sequence(1);
  sequence.Field("header_", &EntrySequence::GetHeader, 3);
  sequence.Raw("seq_", std::list<EntrySequence::value_type>(elements.begin(), elements.end()),
               Until(0));
  sequence.Converted(
      "seq_", [](const EntrySequence& s) { return Elements(s.begin(), s.end()); }, elements,
      Since(1));
  sequence.Check(kEqual);

  using M = RunInfoMeta;
  StoredForm<M, false> message(1);
  message.Field("run_info_", &M::GetRunInfo, M::UNUSABLE_RESPONSE);
  message.Field("actor_name_", &M::GetActorName, L"step");
  message.Field("response_name_", &M::GetResponseName, L"r");
  message.Field("message_", &M::GetMessage, {L"a", L"b"});
  message.Check(kEqual);
  StoredForm<RunInfoContainer, false> messages(1);
  messages.Field("run_infos_", &RunInfoContainer::GetMessages, {message.Read(1)});
  messages.Check(kEqual);
  DesignForm().Check(kEqual);

  using F = SDesign;
  StoredForm<F, false> flat(0);
  flat.Field(ZEL_MEMBER(F, responses), {{L"r", CDesignEntry(2.5)}});
  flat.Field(ZEL_MEMBER(F, parameters), {{L"x", CDesignEntry(1.0)}});
  flat.Field(ZEL_MEMBER(F, run_state), F::FINISHED);
  flat.Field(ZEL_MEMBER(F, activation_state), F::eActivationStatus(2));
  flat.Field(ZEL_MEMBER(F, criteria), {{L"c", MakeCriterion()}});
  flat.Field(ZEL_MEMBER(F, is_approximated), true);
  flat.Field(ZEL_MEMBER(F, id), DesignId(12).Appended(3));
  flat.Field(ZEL_MEMBER(F, is_duplicate_of), DesignId(4));
  flat.Field(ZEL_MEMBER(F, iteration), DesignId(5)).Field(ZEL_MEMBER(F, workflow_id), 6);
  flat.Field(ZEL_MEMBER(F, design_type), corvath::enums::DesignTypes::eType(7));
  flat.Field(ZEL_MEMBER(F, algo_iteration), 8);
  flat.Check();
  Design design = DesignForm().Read(6);
  const SDesign holds_all_but_the_messages(design);
  design.GetStatus().Clear();
  EXPECT_EQ(Load<F>(Save(holds_all_but_the_messages)).ToDesign(), design);

  using Stats = DesignManager::Stats;
  StoredForm<Stats, false> stats(0);
  stats.Field("total_", ZEL_SHOWN_BY(total_.load()), 5);
  stats.Field("succeeded_", ZEL_SHOWN_BY(succeeded_.load()), 6);
  stats.Field("failed_", ZEL_SHOWN_BY(failed_.load()), 7);
  stats.Field("pending_", ZEL_SHOWN_BY(pending_.load()), 8);
  stats.Check(kEqual);
  const std::vector<Design> designs = {DesignForm().Read(6), Design({}, DesignId(1))};
  StoredForm<DesignManager, false> manager(2, /*restores_defaults=*/true);
  manager.Raw("designs_", std::list<Design>(designs.begin(), designs.end()), Until(0));
  manager.Converted("designs_", ZEL_SHOWN_BY(GetDesigns()), designs, Since(1));
  manager.Field("stats_", ZEL_SHOWN_BY(GetStats()), stats.Read(0), Since(2));
  manager.Check(kEqual);
}
