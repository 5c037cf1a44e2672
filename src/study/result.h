#pragma once

#include <json/json.h>

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

namespace corvath::study {

/// Values of a result, row after row.
struct NamedArray {
  std::string name;
  std::size_t rows = 0;
  std::size_t columns = 0;
  std::vector<double> values;  ///< rows * columns
};

/// What a call found: a document, and arrays beside it.
struct Result {
  Json::Value document{Json::objectValue};
  std::deque<NamedArray> arrays;  ///< references to its elements stay valid

  /// A new array of zeros.
  NamedArray& Add(std::string name, std::size_t rows, std::size_t columns) {
    arrays.push_back({std::move(name), rows, columns, std::vector<double>(rows * columns)});
    return arrays.back();
  }
};

}  // namespace corvath::study
