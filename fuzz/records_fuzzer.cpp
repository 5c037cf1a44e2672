// One stored object of any class that project files hold, of any class version: the first line names
// the class, as the compiler does, an archive follows. What was read is written, and what was written
// reads back as the same bytes.

#include "archive/instantiate.h"
#include "archive/portable_iarchive.h"
#include "archive/portable_oarchive.h"
#include "design/designs/design_manager.h"
#include "design/parameters/parameter_manager.h"
#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/kernels/kernels_nodal.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/subspace_results.h"
#include "metamodel/thin_plate_splines.h"
#include "metamodel/transforms/trans_box_cox.h"
#include "metamodel/transforms/trans_limits.h"
#include "metamodel/transforms/trans_min_max.h"
#include "optimizer/settings_nlpqlp.h"
#include "project/attached_path.h"
#include "project/records/algorithm_info.h"
#include "project/records/optimization_information.h"
#include "project/records/reliability_information.h"
#include "project/records/zel3_information.h"
#include "project/records/zel_information.h"
#include "project/settings/zel_classic_settings.h"
#include "project/settings/zel_combined_settings.h"
#include "project/vrdb.h"
#include "use_designs.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace {

using namespace corvath::algorithm::datatypes;
using namespace corvath::math::metamodel;
using namespace corvath::math::transform;
using namespace corvath::zel;

template <class T>
void Read(const std::string& bytes, T& object) {
  std::istringstream stream(bytes);
  corvath::portable_binary_iarchive archive(stream, corvath::archive::kSilentOnMismatch);
  archive >> object;
}

template <class T>
std::string Write(const T& object) {
  std::ostringstream stream;
  {
    corvath::portable_binary_oarchive archive(stream);
    archive << object;
  }
  return stream.str();
}

template <class T, class = void>
struct IsOfDesigns : std::false_type {};
template <class T>
struct IsOfDesigns<T, std::void_t<decltype(fuzz::Use(std::declval<const T&>()))>> : std::true_type {
};

template <class T, class = void>
struct HasEquality : std::false_type {};
template <class T>
struct HasEquality<T, std::void_t<decltype(bool(std::declval<T>() == std::declval<T>()))>>
    : std::true_type {};

void MergeWithItself(const DesignSet& set) {
  const auto copy = set.Clone();
  copy->Merge(set);
  fuzz::Try([&] { copy->Merge(DesignSet(set.identifier_ + L"'")); });
  set.IsEqual(*copy);
}

/// What else is asked of an object of its kind.
template <class T>
void Use(const T& object) {
  if constexpr (std::is_base_of_v<DetailedInformationBase, T>) object.IsEqual(object.Clone());
  if constexpr (IsOfDesigns<T>::value) fuzz::Use(object);
  if constexpr (std::is_base_of_v<MetamodelSettings, T>) {
    object.Clone()->IsEqual(object);
    object.IsNearlyEqual(object);
  }
  if constexpr (std::is_copy_constructible_v<T> && std::is_move_assignable_v<T>) {
    T copy(object);
    T other(std::move(copy));
    copy = other;
    other = std::move(copy);
  }
  if constexpr (HasEquality<T>::value) {
    T fresh;
    fuzz::Try([&] { return object == fresh || fresh == object; });
    fuzz::Try([&] { return object == object; });
  }
  if constexpr (std::is_base_of_v<DesignSet, T>) MergeWithItself(object);
  if constexpr (std::is_base_of_v<SystemsInformation, T>) {
    T copy(object);
    for (auto& named : copy.additional_designs_) {
      const AdditionalDesignContainer container = named.second;
      fuzz::Try([&] { named.second.Merge(container); });
      for (const auto& set : container.design_sets_)
        if (set.second) MergeWithItself(*set.second);
      fuzz::Try([&] { return container == named.second; });
    }
    for (const auto& named : object.design_sets_map_)
      if (named.second) MergeWithItself(copy.AddDesignSet(named.first));
    fuzz::Try([&] { copy.GetDesignSet(copy.AddDesignSet(L"new").identifier_); });
    fuzz::Try([&] { copy.GetDesignSet(L"unknown"); });
  }
  if constexpr (std::is_same_v<T, AlgorithmInfo>) {
    AlgorithmInfo copy(object);
    fuzz::Try([&] { copy.GetZELInformation(); });
    fuzz::Try([&] {
      if (const auto detail = copy.GetZEL3Information()) detail->GetSurrogateInfos();
    });
    fuzz::Try([&] { copy.GetReliabilityInformation(); });
    fuzz::Try([&] { copy.GetSystemsInformation(); });
  }
  if constexpr (std::is_same_v<T, SurrogateInfo>) {
    fuzz::Try([&] { return object == object.Clone(); });
    for (const std::wstring& name : object.GetParameterNames()) {
      fuzz::Try([&] { object.GetParameterIndex(name); });
      fuzz::Try([&] { object.GetSingleCoP(name); });
      fuzz::Try([&] { object.IsParameterOutsideSubspace(name); });
    }
    SurrogateInfoContainer models;
    models.AddOrReplace(object);
    models.AddOrReplace(object);
    models.HasSurrogateInfo(object.GetResponseName(), 1);
    models.Clone().GetSurrogateInfo(object.GetFullName());
    models.CheckAvailable({});
    models.BuildAll();
    models.BuildErrorsAll();
  }
  if constexpr (std::is_same_v<T, VRDB>) {
    Use(object.GetParameterManager());
    Use(object.GetDesignContainer());
  }
}

template <class T>
void Check(const std::string& bytes) {
  T object;
  Read(bytes, object);
  Use(object);
  const std::string written = Write(object);
  T same;
  Read(written, same);
  // A project holds the time at which it was written.
  if (!std::is_same_v<T, VRDB> && Write(same) != written) std::abort();
}

using Reader = void (*)(const std::string& bytes);

template <class... T>
std::map<std::string, Reader> ReadersOf() {
  return {{typeid(T).name(), &Check<T>}...};
}

const std::map<std::string, Reader>& Readers() {
  static const auto readers =
      ReadersOf<AlgorithmInfo, AppraisalData, CDesignEntry, Criterion, Design, DesignManager,
                DesignSet, EntrySequence, KernelConstInflExp, KernelConstInflIsoExp,
                KernelConstInflIsoReg, KernelNodalInflExp, LinearRegression,
                LinearRegressionSettings, MetamodelSettings, MovingLeastSquares,
                MovingLeastSquaresSettings, OptimizationDesignSet, OptimizationInformation,
                OrdinaryKriging, OrdinaryKrigingSettings, Parameter, ParameterManager,
                ReliabilityDesignSet, ReliabilityDesignSetInfo, ReliabilityInformation, SDesign,
                SignalInfo, SubspaceResultContainer, SurrogateInfo, SystemsInformation,
                SurrogateTPS, TransBoxCox, TransLimits, TransMinMax, VRDB, VRDBAttachedPath,
                ZEL3Information, ZELAdvancedSettings, ZELAutomaticSettings, ZELClassicSettings,
                ZELCombinedSettings, ZELData, ZELInformation, ZELSettings,
                corvath::algorithm::optimizer::OptimizerSettingsNLPQLP<double>>();
  return readers;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t end = input.find('\n');
  if (end == input.npos) return 0;
  const auto reader = Readers().find(input.substr(0, end));
  if (reader == Readers().end()) return 0;
  try {
    reader->second(input.substr(end + 1));
  } catch (const std::exception&) {
    // a refusal
  }
  return 0;
}
