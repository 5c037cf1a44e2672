#include "metamodel/subspace_results.h"

#include "archive/instantiate.h"
#include "foundation/same_figures.h"
#include "metamodel/surrogate_settings.h"

#include <set>

namespace corvath::math::metamodel {

namespace {

boost::shared_ptr<SurrogateSettingsBase> CloneOf(
    const boost::shared_ptr<SurrogateSettingsBase>& settings) {
  if (!settings) return {};
  return boost::shared_ptr<SurrogateSettingsBase>(settings->Clone());
}

/// The settings objects that an archive has handed out, kept with the archive; it keeps them alive,
/// so that no address comes back.
struct SettingsTable {
  std::set<boost::shared_ptr<SurrogateSettingsBase>> seen;
};

const char kSettingsTableId = 0;

}  // namespace

SubspaceResults::SubspaceResults(const SubspaceResults& other)
    : model_type(other.model_type),
      settings(CloneOf(other.settings)),
      CoD(other.CoD),
      CoDadj(other.CoDadj),
      CoP(other.CoP),
      CoPadj(other.CoPadj),
      CoDtest(other.CoDtest),
      predError(other.predError),
      singleCoPs(other.singleCoPs) {}

SubspaceResults& SubspaceResults::operator=(const SubspaceResults& other) {
  if (this != &other) *this = SubspaceResults(other);
  return *this;
}

bool operator==(const SubspaceResults& a, const SubspaceResults& b) {
  const bool same_settings =
      a.settings && b.settings ? a.settings->Equals(*b.settings) : a.settings == b.settings;
  return same_settings && a.model_type == b.model_type && SameFigure(a.CoD, b.CoD) &&
         SameFigure(a.CoDadj, b.CoDadj) && SameFigure(a.CoP, b.CoP) &&
         SameFigure(a.CoPadj, b.CoPadj) && SameFigure(a.CoDtest, b.CoDtest) &&
         SameFigure(a.predError, b.predError) && SameFigures(a.singleCoPs, b.singleCoPs);
}

template <class Archive>
void SubspaceResults::save(Archive& ar, unsigned int /*version*/) const {
  ar& BOOST_SERIALIZATION_NVP(model_type);
  ar& BOOST_SERIALIZATION_NVP(settings);
  ar& BOOST_SERIALIZATION_NVP(CoD);
  ar& BOOST_SERIALIZATION_NVP(CoDadj);
  ar& BOOST_SERIALIZATION_NVP(CoP);
  ar& BOOST_SERIALIZATION_NVP(CoPadj);
  ar& BOOST_SERIALIZATION_NVP(CoDtest);
  ar& BOOST_SERIALIZATION_NVP(predError);
  ar& BOOST_SERIALIZATION_NVP(singleCoPs);
}

template <class Archive>
void SubspaceResults::load(Archive& ar, unsigned int /*version*/) {
  ar& BOOST_SERIALIZATION_NVP(model_type);
  ar& BOOST_SERIALIZATION_NVP(settings);
  auto& table = ar.template get_helper<SettingsTable>(const_cast<char*>(&kSettingsTableId));
  if (settings && !table.seen.insert(settings).second) settings = CloneOf(settings);
  ar& BOOST_SERIALIZATION_NVP(CoD);
  ar& BOOST_SERIALIZATION_NVP(CoDadj);
  ar& BOOST_SERIALIZATION_NVP(CoP);
  ar& BOOST_SERIALIZATION_NVP(CoPadj);
  ar& BOOST_SERIALIZATION_NVP(CoDtest);
  ar& BOOST_SERIALIZATION_NVP(predError);
  ar& BOOST_SERIALIZATION_NVP(singleCoPs);
}

template <class Archive>
void SubspaceResultContainer::serialize(Archive& ar, unsigned int /*version*/) {
  ar& BOOST_SERIALIZATION_NVP(container_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_LOAD_SAVE(corvath::math::metamodel::SubspaceResults)
ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::SubspaceResultContainer)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::SubspaceResults)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::SubspaceResultContainer)
