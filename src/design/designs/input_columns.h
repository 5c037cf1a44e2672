#pragma once

#include "design/designs/design.h"
#include "design/parameters/deterministic_properties.h"
#include "design/parameters/discrete_states.h"
#include "design/parameters/parameter_manager.h"

#include <Eigen/Core>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {

/// Which side of the parameters a matrix of designs runs over.
enum class InputSide { kDeterministic, kRandom };

/// The columns of a matrix of designs: each has a name and its own way from a design's value to a
/// number and back. The order is the caller's, whatever the order of the parameter manager, of a
/// random variable set (mixed before stochastic) or of a map of properties; values go to columns
/// by name alone.
///
/// By the kind of a deterministic property a cell is the value (continuous), the nearest state's
/// number (by value), or the position of the state (by index); on the random side it is the value.
class InputColumns {
 public:
  /// One column per property, in their order.
  explicit InputColumns(const NamedProperties& properties);

  /// One column of plain numbers per name.
  static InputColumns Plain(const std::vector<std::wstring>& names);

  /// The inputs `names` of `manager`, in the order of `names`. A name may be a compound key.
  /// @throws corvath::utils::runtime_error  a parameter does not exist or does not have this side
  static InputColumns Of(const ParameterManager& manager, const std::vector<std::wstring>& names,
                         InputSide side);

  std::size_t GetSize() const { return columns_.size(); }
  /// The names of the columns, in their order.
  std::vector<std::wstring> GetNames() const;

  /// One row per design, one column per input. Takes O(designs x (inputs + parameters of a
  /// design)).
  /// @throws std::runtime_error  a design lacks an input, or a state is no number
  /// @throws std::range_error    a value of a domain by index is none of its states
  Eigen::MatrixXd ToMatrix(const std::vector<const Design*>& designs) const;
  Eigen::MatrixXd ToMatrix(const std::vector<Design>& designs) const;

  /// One sequence per row of `matrix`, its entries in the order of the columns.
  /// @throws std::runtime_error  `matrix` does not have GetSize() columns
  std::vector<EntrySequence> ToSequences(const Eigen::Ref<const Eigen::MatrixXd>& matrix) const;

 private:
  struct Column {
    std::wstring name;
    enums::DeterministicProperties::eKind kind = enums::DeterministicProperties::CONTINUOUS;
    StatesByValue by_value;  ///< filled for the kind by value
    StatesByIndex by_index;  ///< filled for the kinds by index

    explicit Column(std::wstring plain_name) : name(std::move(plain_name)) {}
    Column(std::wstring property_name, const DeterministicProperties& property);
    double ToNumber(const CDesignEntry& value) const;
    CDesignEntry ToEntry(double cell) const;
  };

  InputColumns() = default;

  template <class GetDesign>
  Eigen::MatrixXd Fill(std::size_t num_designs, const GetDesign& design) const;

  std::vector<Column> columns_;
};

}  // namespace corvath::algorithm::datatypes
