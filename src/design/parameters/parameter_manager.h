#pragma once

#include "archive/serialization.h"
#include "design/parameters/correlation_table.h"
#include "design/parameters/parameter.h"

#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {

/// Stands between the names of parameter and property in a compound key.
inline constexpr wchar_t kPropertySeparator[] = L"#$#";

/// (text before, text behind) the last `separator` in `key`; without one, (key, empty text).
std::pair<std::wstring, std::wstring> SplitKey(const std::wstring& key,
                                               const std::wstring& separator = kPropertySeparator);

/// The parameters of a project in the order of insertion, with unique names, and their correlations
/// (coherences). A parameter is changed here through the manager, which keeps the names unique.
class ParameterManager {
 public:
  /// Appends a copy.
  /// @throws corvath::utils::runtime_error  the name exists
  void AddParameter(const Parameter& parameter);
  /// Replaces the parameter of the same name.
  /// @throws corvath::utils::runtime_error  there is none
  void ReplaceParameter(const Parameter& parameter);

  /// Looked up from the beginning of the list; the reference lives as long as the parameter.
  /// @throws corvath::utils::runtime_error  the name is unknown; the same for the next two
  const Parameter& GetParameter(const std::wstring& name) const;
  void GetBounds(const std::wstring& name, CDesignEntry& lower, CDesignEntry& upper) const;
  void SetKind(const std::wstring& name, enums::DeterministicProperties::eKind kind);

  /// The parameter, or null.
  const Parameter* FindParameter(const std::wstring& name) const;

  /// All parameters, constant ones included.
  const std::list<Parameter>& GetAllParameters() const { return parameters_; }
  /// Copies of those that are not constant (and not dependent), in the same order.
  std::list<Parameter> GetParameters(bool withoutDependent = false) const;
  bool IsEmpty() const { return parameters_.empty(); }

  const CorrelationMatrix& GetCoherences() const { return coherences_; }
  CorrelationMatrix& GetCoherences() { return coherences_; }

  /// The properties of all parameters by compound key: the parameter's name, or the parameter's
  /// name, kPropertySeparator and the property's name where the two differ. The order of a map is
  /// not the order of the parameters: for the columns of a matrix use InputColumns.
  /// @throws std::logic_error  two properties have one key
  std::map<std::wstring, DeterministicProperties> GetDeterministicProperties() const;

  /// The parameters that the keys name (a compound key names its parameter), each once, in the
  /// order of the keys, with the correlations among them. A key that names nothing is passed over.
  template <class Keys>
  ParameterManager GetSubset(const Keys& keys) const {
    return GetSubset(std::vector<std::wstring>(keys.begin(), keys.end()));
  }
  ParameterManager GetSubset(const std::vector<std::wstring>& keys) const;

  /// Same parameters in the same order and same coherences, number by number (a NaN is unequal).
  bool IsEqual(const ParameterManager& other, bool compareOrigin) const;
  bool operator==(const ParameterManager& other) const { return IsEqual(other, false); }
  bool operator!=(const ParameterManager& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  std::list<Parameter>::iterator Find(const std::wstring& name);

  std::list<Parameter> parameters_;
  CorrelationMatrix coherences_;
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::ParameterManager, 1)
