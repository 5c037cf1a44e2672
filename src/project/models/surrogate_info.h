#pragma once

#include "archive/serialization.h"
#include "design/hierarchical_id.h"
#include "metamodel/appraisal_data.h"

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace corvath::math::metamodel {
class SurrogateBase;
}

namespace corvath::algorithm::datatypes {

/// The stored record of one response's model: the model, its quality figures and the inputs that it
/// uses. A copy shares the model; Clone() owns a copy of it.
///
/// An element of a vector response has the response's name and its index; a scalar response has the
/// index 0.
class SurrogateInfo {
 public:
  using SurrogatePointer = boost::shared_ptr<math::metamodel::SurrogateBase>;
  using HidVector = std::vector<DesignId>;
  using ParameterLookupMap = std::map<std::wstring, std::uint64_t>;

  SurrogateInfo() = default;
  /// The record of a scalar response.
  explicit SurrogateInfo(std::wstring response_name) : response_name_(std::move(response_name)) {}
  /// The record of element `response_index` of a vector response.
  SurrogateInfo(std::wstring response_name, std::uint64_t response_index)
      : response_name_(std::move(response_name)),
        response_index_(response_index),
        is_response_scalar_(false) {}

  /// A record with a model of its own.
  SurrogateInfo Clone() const;

  const std::wstring& GetResponseName() const { return response_name_; }
  std::uint64_t GetResponseIndex() const { return response_index_; }
  bool IsResponseScalar() const { return is_response_scalar_; }
  /// The name of a scalar response, otherwise "name[index]".
  std::wstring GetFullName() const;

  /// The model; null when the record has none.
  const SurrogatePointer& GetSurrogate() const { return surrogate_; }
  void SetSurrogate(SurrogatePointer surrogate) { surrogate_ = std::move(surrogate); }

  const math::metamodel::AppraisalData& GetAppraisalData() const { return appraisal_data_; }
  void SetAppraisalData(math::metamodel::AppraisalData data) { appraisal_data_ = std::move(data); }

  /// Number of inputs of the model, and which of them belong to its subspace.
  std::uint64_t GetNumVars() const { return num_vars_; }
  const std::vector<bool>& GetSubspace() const { return subspace_; }
  /// Input name to its column in the model and its bit in the subspace.
  const ParameterLookupMap& GetParameterNameLookupMap() const { return parameter_name_lookup_map_; }
  /// The input names in the order of their columns.
  std::vector<std::wstring> GetParameterNames() const;
  /// Inputs `names`, in the order of the model's columns, and the bits of those in its subspace.
  /// @throws std::logic_error  the lengths differ
  void SetParameters(const std::vector<std::wstring>& names, std::vector<bool> subspace);

  /// @throws corvath::utils::runtime_error `Parameter "<name>" does not exist.`
  std::uint64_t GetParameterIndex(const std::wstring& name) const;
  /// Whether there is a single CoP of input `name`; false for an unknown name.
  bool HasSingleCoP(const std::wstring& name) const;
  /// @throws corvath::utils::runtime_error `Single CoP for parameter "<name>" does not exist.`
  double GetSingleCoP(const std::wstring& name) const;
  /// Whether the model ignores input `name`; true for an unknown name.
  /// @throws corvath::utils::runtime_error "Subspace is not set properly."
  bool IsParameterOutsideSubspace(const std::wstring& name) const;

  /// How the model was tested; carried from file to file.
  std::int32_t GetTestingType() const { return testing_type_; }
  void SetTestingType(std::int32_t type) { testing_type_ = type; }

  /// The designs that were the model's support points, in the order of its rows; empty when the
  /// file does not tell.
  const HidVector& GetUsedHids() const { return used_hids_; }
  void SetUsedHids(HidVector ids) { used_hids_ = std::move(ids); }
  /// Whether the support points can be taken from the designs: some used id is not the default id.
  bool HasUsedHids() const;

  /// Equal in every stored figure; the models by SurrogateBase::Equals.
  friend bool operator==(const SurrogateInfo& a, const SurrogateInfo& b);
  friend bool operator!=(const SurrogateInfo& a, const SurrogateInfo& b) { return !(a == b); }

 private:
  friend class boost::serialization::access;
  ZEL_SPLIT_SERIALIZE()
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);

  std::wstring response_name_;
  std::uint64_t response_index_ = 0;
  bool is_response_scalar_ = true;
  SurrogatePointer surrogate_;
  math::metamodel::AppraisalData appraisal_data_;
  std::uint64_t num_vars_ = 0;
  std::vector<bool> subspace_;
  ParameterLookupMap parameter_name_lookup_map_;
  std::int32_t testing_type_ = 0;
  HidVector used_hids_;
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::SurrogateInfo, 4)
