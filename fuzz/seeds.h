#pragma once

#include <Eigen/Core>
#include <boost/optional.hpp>
#include <boost/serialization/nvp.hpp>

#include <cstdint>
#include <list>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace fuzz {

/// First byte of an input of the archive's target.
enum ArchivedKind : std::uint8_t { kValue = '0', kDesigns, kParameters, kContainers };

/// One of each container that the archive has a reader of its own for.
struct Containers {
  std::vector<double> numbers;
  std::vector<bool> bits;
  std::vector<std::wstring> texts;
  std::list<std::string> narrow_texts;
  std::set<std::int32_t> set;
  std::map<std::wstring, std::vector<std::int64_t>> map;
  boost::optional<double> optional;
  Eigen::MatrixXd matrix;
  Eigen::VectorXd vector;

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    ar& BOOST_SERIALIZATION_NVP(numbers) & BOOST_SERIALIZATION_NVP(bits);
    ar& BOOST_SERIALIZATION_NVP(texts) & BOOST_SERIALIZATION_NVP(narrow_texts);
    ar& BOOST_SERIALIZATION_NVP(set) & BOOST_SERIALIZATION_NVP(map);
    ar& BOOST_SERIALIZATION_NVP(optional);
    ar& BOOST_SERIALIZATION_NVP(matrix) & BOOST_SERIALIZATION_NVP(vector);
  }
};

}  // namespace fuzz
