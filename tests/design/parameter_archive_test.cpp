// Stored forms of parameters and their parts, of every class version. A stand-in writes each key
// by hand; the classes must read all versions and write the bytes of the newest.

#include "design/parameter_manager.h"
#include "support/archive_round_trip.h"

#include <gtest/gtest.h>

#include <type_traits>

using boost::serialization::make_nvp;
using namespace corvath::algorithm::datatypes;
namespace enums = corvath::enums;

namespace {

boost::uuids::uuid Uuid(unsigned char first) {
  boost::uuids::uuid id{};
  for (unsigned char& byte : id) byte = first++;
  return id;
}

template <int kVersion>
struct StoredRandom {
  std::int32_t type = enums::RandomVariable::LOGNORMAL;
  std::int32_t kind = 3;
  std::vector<double> params{0.25, 0.5};
  std::vector<double> moments{1.5, 2.5};
  bool has_set_cov = true;
  double cov = 0.125;
  bool validated = false;
  std::vector<std::pair<double, double>> pdf_coords{{1.0, 2.0}, {3.0, 4.0}};

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& make_nvp("type_", type);
    ar& make_nvp("kind_", kind);
    ar& make_nvp("params_", params);
    ar& make_nvp("moments_", moments);
    if (kVersion >= 3) ar& make_nvp("has_set_cov_", has_set_cov);
    if (kVersion >= 3) ar& make_nvp("cov_", cov);
    if (kVersion >= 4) ar& make_nvp("validated_", validated);
    if (kVersion <= 1) ar& make_nvp("pdf_coords_", pdf_coords);
  }
};

template <int kVersion>
struct StoredDeterministic {
  std::int32_t ordered_flag = enums::DeterministicProperties::ORDINAL_BY_INDEX;
  std::int32_t domain_flag = enums::DesignEntry::STRING;
  CDesignEntry lower{0};
  CDesignEntry upper{1};
  std::vector<CDesignEntry> states{CDesignEntry(L"bronze"), CDesignEntry(L"steel")};
  CDesignEntry lower_relative{-0.5};
  CDesignEntry upper_relative{0.5};

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& make_nvp("ordered_flag_", ordered_flag);
    ar& make_nvp("domain_flag_", domain_flag);
    ar& make_nvp("lower_bound_", lower);
    ar& make_nvp("upper_bound_", upper);
    ar& make_nvp("discrete_states_", states);
    if (kVersion >= 1) ar& make_nvp("lower_bound_relative_", lower_relative);
    if (kVersion >= 1) ar& make_nvp("upper_bound_relative_", upper_relative);
  }
};

template <int kVersion>
struct StoredParameter {
  std::wstring name = L"Breite µ";
  bool active = false;
  bool constant = true;
  StoredRandom<4> rprop;
  std::list<std::pair<std::wstring, StoredDeterministic<1>>> dprops;
  CDesignEntry reference{L"steel"};
  std::map<std::int32_t, bool> mutable_map{{0, true}, {7, false}};
  std::wstring dependency = L"a + b";
  boost::uuids::uuid id = Uuid(1);
  bool modifiable = true;
  std::wstring unit = L"mm";
  bool removable = false;
  boost::uuids::uuid origin = Uuid(101);

  StoredParameter() { dprops.emplace_back(name, StoredDeterministic<1>()); }

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& make_nvp("name_", name);
    ar& make_nvp("active_", active);
    ar& make_nvp("const_", constant);
    ar& make_nvp("rprop_", rprop);
    ar& make_nvp("dprops_", dprops);
    ar& make_nvp("reference_value_", reference);
    if (kVersion >= 1) ar& make_nvp("mutable_map_", mutable_map);
    if (kVersion >= 2) ar& make_nvp("dependency_expression_", dependency);
    if (kVersion >= 3) ar& make_nvp("id_", id);
    if (kVersion >= 4) ar& make_nvp("modifiable_", modifiable);
    if (kVersion >= 5) ar& make_nvp("unit_", unit);
    if (kVersion >= 6) ar& make_nvp("removable_", removable);
    if (kVersion >= 7) ar& make_nvp("origin_", origin);
  }
};

struct StoredPair {
  std::wstring first;
  std::wstring second;

  bool operator<(const StoredPair& other) const {
    return std::tie(first, second) < std::tie(other.first, other.second);
  }
  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& make_nvp("first_", first);
    ar& make_nvp("second_", second);
  }
};

struct StoredCorrelations {
  std::map<StoredPair, double> matrix;

  StoredCorrelations() { matrix[{L"Breite µ", L"a"}] = -0.5; }

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& make_nvp("matrix_", matrix);
  }
};

template <int kVersion>
struct StoredManager {
  std::list<StoredParameter<7>> parameters{StoredParameter<7>()};
  StoredCorrelations coherences;

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& make_nvp("parameters_", parameters);
    if (kVersion >= 1) ar& make_nvp("coherences_", coherences);
  }
};

}  // namespace

namespace boost::serialization {
#define STAND_IN_VERSION(T)                \
  template <int kVersion>                  \
  struct version<T<kVersion>> {            \
    using type = mpl::int_<kVersion>;      \
    using tag = mpl::integral_c_tag;       \
    static constexpr int value = kVersion; \
  };
STAND_IN_VERSION(StoredRandom)
STAND_IN_VERSION(StoredDeterministic)
STAND_IN_VERSION(StoredParameter)
STAND_IN_VERSION(StoredManager)
#undef STAND_IN_VERSION
}  // namespace boost::serialization

namespace {

/// Calls `check` with each of the numbers 0 to kLast as a compile-time constant.
template <int kLast, class Check>
void ForEachVersion(const Check& check) {
  if constexpr (kLast > 0) ForEachVersion<kLast - 1>(check);
  SCOPED_TRACE(kLast);
  check(std::integral_constant<int, kLast>());
}

}  // namespace

TEST(ParameterArchive, RandomPropertiesReadEveryVersion) {
  ForEachVersion<4>([](auto version) {
    constexpr int kVersion = decltype(version)::value;
    // A value behind the record shows that all of it was read.
    const std::string bytes = support::Save(std::pair(StoredRandom<kVersion>(), 42));
    const auto [read, behind] = support::Load<std::pair<RandomProperties, int>>(bytes);
    EXPECT_EQ(behind, 42);
    EXPECT_EQ(read.GetType(), enums::RandomVariable::LOGNORMAL);
    EXPECT_EQ(read.GetKind(), 3);
    EXPECT_EQ(read.GetParams(), (std::vector<double>{0.25, 0.5}));
    EXPECT_EQ(read.GetMoments(), (std::vector<double>{1.5, 2.5}));
    EXPECT_EQ(read.HasCov(), kVersion >= 3);
    if (read.HasCov()) {
      EXPECT_EQ(read.GetCov(), 0.125);
    }
    EXPECT_EQ(read.IsValidated(), kVersion < 4);
  });
}

TEST(ParameterArchive, DeterministicPropertiesReadEveryVersion) {
  ForEachVersion<1>([](auto version) {
    constexpr int kVersion = decltype(version)::value;
    const auto read =
        support::Load<DeterministicProperties>(support::Save(StoredDeterministic<kVersion>()));
    EXPECT_EQ(read.GetKind(), enums::DeterministicProperties::ORDINAL_BY_INDEX);
    EXPECT_EQ(read.GetDataType(), enums::DesignEntry::STRING);
    EXPECT_EQ(read.GetLowerBound(), CDesignEntry(0));
    EXPECT_EQ(read.GetUpperBound(), CDesignEntry(1));
    ASSERT_EQ(read.GetDiscreteStates().size(), 2u);
    EXPECT_EQ(read.GetDiscreteStates()[1], CDesignEntry(L"steel"));
    EXPECT_EQ(read.GetLowerBoundRelative(), kVersion >= 1 ? CDesignEntry(-0.5) : CDesignEntry());
    EXPECT_EQ(read.GetUpperBoundRelative(), kVersion >= 1 ? CDesignEntry(0.5) : CDesignEntry());
  });
}

TEST(ParameterArchive, ParametersReadEveryVersionAndKeepDefaults) {
  ForEachVersion<7>([](auto version) {
    constexpr int kVersion = decltype(version)::value;
    const auto read = support::Load<Parameter>(support::Save(StoredParameter<kVersion>()));
    EXPECT_EQ(read.GetName(), L"Breite µ");
    EXPECT_FALSE(read.IsActive());
    EXPECT_TRUE(read.IsConst());
    EXPECT_TRUE(read.IsMixed());
    EXPECT_EQ(read.GetDeterministicProperty(L"Breite µ").GetDiscreteStates().size(), 2u);
    EXPECT_EQ(read.GetReferenceValue(), CDesignEntry(L"steel"));
    EXPECT_EQ(read.GetMutableMembers().size(), kVersion >= 1 ? 2u : 0u);
    EXPECT_EQ(read.GetDependencyExpression(), kVersion >= 2 ? L"a + b" : L"");
    EXPECT_EQ(read.GetId() == Uuid(1), kVersion >= 3);
    EXPECT_FALSE(read.GetId().is_nil());
    EXPECT_EQ(read.IsModifiable(), kVersion >= 4);
    EXPECT_EQ(read.GetUnit(), kVersion >= 5 ? L"mm" : L"");
    EXPECT_EQ(read.IsRemovable(), kVersion < 6);
    EXPECT_EQ(read.GetOrigin(), kVersion >= 7 ? Uuid(101) : read.GetId());
  });
}

TEST(ParameterArchive, ManagersReadEveryVersionAndWriteTheNewest) {
  ParameterManager manager;
  manager.AddParameter(Parameter(L"old"));
  manager.GetCoherences().Set(L"old", L"older", 0.5);
  support::LoadInto(support::Save(StoredManager<0>()), manager);
  EXPECT_EQ(manager.GetAllParameters().size(), 1u);
  EXPECT_TRUE(manager.GetCoherences().IsEmpty());

  const std::string newest = support::Save(StoredManager<1>());
  support::LoadInto(newest, manager);
  EXPECT_EQ(manager.GetParameter(L"Breite µ").GetUnit(), L"mm");
  EXPECT_EQ(manager.GetCoherences().Get(L"a", L"Breite µ"), -0.5);
  EXPECT_EQ(support::Save(manager), newest);
}
