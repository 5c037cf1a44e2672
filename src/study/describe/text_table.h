#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace corvath::study {

/// A table of UTF-8 texts for a person: columns as wide as their widest cell, two blanks between.
class TextTable {
 public:
  enum class Align { kLeft, kRight };

  void AddColumn(std::string title, Align align);
  /// @param cells  one for each column
  void AddRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  void Print(std::ostream& out, const std::string& indent) const;

 private:
  std::vector<Align> aligns_;
  std::vector<std::vector<std::string>> rows_{{}};  ///< the titles first
};

/// `value` with six significant digits.
std::string Short(double value);

}  // namespace corvath::study
