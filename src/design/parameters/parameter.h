#pragma once

#include "archive/serialization.h"
#include "design/designs/design_entry.h"
#include "design/parameters/deterministic_properties.h"
#include "design/parameters/random_properties.h"

#include <boost/uuid/uuid.hpp>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace corvath::algorithm::datatypes {

/// Names of the members that a user may be allowed to change. Only the first takes part in
/// comparing parameters; other stored numbers pass through.
enum MutableMember : std::int32_t { kFirstMutableMember = 0 };

/// One input of a project's model: a named quantity with an optional deterministic side, the domain
/// in which an optimisation may move it, and an optional random side, the distribution in which it
/// scatters.
class Parameter {
 public:
  /// An active parameter "unnamed" that has neither side, with a new random identity.
  /// @throws boost::uuids::entropy_error  the random source fails
  Parameter();
  explicit Parameter(const std::wstring& name);

  const std::wstring& GetName() const { return name_; }
  /// A deterministic property under the old name takes the new one.
  void SetName(const std::wstring& name);

  bool IsActive() const { return active_; }
  void SetActive(bool active) { active_ = active; }
  bool IsConst() const { return const_; }
  void SetConst(bool constant) { const_ = constant; }
  bool IsModifiable() const { return modifiable_; }
  void SetModifiable(bool modifiable) { modifiable_ = modifiable; }
  bool IsRemovable() const { return removable_; }
  void SetRemovable(bool removable) { removable_ = removable; }
  const std::wstring& GetUnit() const { return unit_; }
  void SetUnit(const std::wstring& unit) { unit_ = unit; }
  /// Calculator expression of a dependent parameter; empty for all others.
  const std::wstring& GetDependencyExpression() const { return dependency_expression_; }
  void SetDependencyExpression(const std::wstring& text) { dependency_expression_ = text; }
  /// Which members may be changed; a key that is missing counts as false.
  const std::map<MutableMember, bool>& GetMutableMembers() const { return mutable_map_; }
  void SetMutable(MutableMember member, bool value) { mutable_map_[member] = value; }

  /// Identity of this object, and of the parameter that it stems from (its own, unless set).
  const boost::uuids::uuid& GetId() const { return id_; }
  const boost::uuids::uuid& GetOrigin() const { return origin_; }
  void SetOrigin(const boost::uuids::uuid& origin) { origin_ = origin; }

  bool IsDependent() const { return !dependency_expression_.empty(); }
  bool HasRandom() const { return rprop_.GetKind() != 0; }
  bool IsOptimization() const { return !dprops_.empty(); }
  bool IsStochastic() const { return HasRandom() && !IsOptimization(); }
  bool IsMixed() const { return HasRandom() && IsOptimization(); }

  const RandomProperties& GetRandomProperties() const { return rprop_; }
  void SetRandomProperties(const RandomProperties& properties) { rprop_ = properties; }

  /// The deterministic side; as a rule one property, under the parameter's name.
  const NamedProperties& GetDeterministicProperties() const { return dprops_; }
  /// Replaces the property of that name or appends it.
  void SetDeterministicProperty(const std::wstring& name, const DeterministicProperties& property);
  /// Replaces the property under the parameter's name or appends it.
  void SetDeterministicProperty(const DeterministicProperties& property) {
    SetDeterministicProperty(name_, property);
  }
  /// @throws corvath::utils::runtime_error  there is no such property
  const DeterministicProperties& GetDeterministicProperty(const std::wstring& name) const;
  const DeterministicProperties& GetDeterministicProperty(std::size_t index) const;
  const std::wstring& GetDeterministicPropertyName(std::size_t index) const;

  /// Changes the kind of the first property, brings all properties to its data type, and converts
  /// the reference value.
  /// @throws corvath::utils::runtime_error  there is no deterministic side, or there is a random
  /// one
  ///                                        and `kind` goes by index
  void SetKind(enums::DeterministicProperties::eKind kind);

  /// Copies the bounds of the first property.
  /// @throws corvath::utils::runtime_error  there is no deterministic side
  void GetBounds(CDesignEntry& lower, CDesignEntry& upper) const;

  const CDesignEntry& GetReferenceValue() const { return reference_value_; }
  /// Stores the nominal value, whose data type follows from the two sides: REAL for a stochastic
  /// parameter, the domain's for an optimisation parameter, both at once for a mixed one; any type
  /// for a parameter without sides.
  /// @param convert  bring the value to that type first
  /// @throws corvath::utils::runtime_error  it has another type
  void SetReferenceValue(const CDesignEntry& value, bool convert);

  /// Compares all but the identity; `compareOrigin` decides about the origin.
  bool IsEqual(const Parameter& other, bool compareOrigin) const;
  bool operator==(const Parameter& other) const { return IsEqual(other, false); }
  bool operator!=(const Parameter& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  const NamedProperties::value_type& PropertyAt(std::size_t index) const;
  void CheckReferenceType(enums::DesignEntry::eType type) const;
  bool IsMutable(MutableMember member) const;

  std::wstring name_ = L"unnamed";
  bool active_ = true;
  bool const_ = false;
  RandomProperties rprop_;
  NamedProperties dprops_;
  CDesignEntry reference_value_;
  std::map<MutableMember, bool> mutable_map_;
  std::wstring dependency_expression_;
  boost::uuids::uuid id_;
  bool modifiable_ = false;
  std::wstring unit_;
  bool removable_ = true;
  boost::uuids::uuid origin_;
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::Parameter, 7)
