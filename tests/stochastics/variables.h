#pragma once

#include "foundation/exception.h"
#include "foundation/text.h"
#include "stochastics/rv_factory.h"
#include "support/files.h"
#include "support/testing.h"

/// Short builders of random variables, and those of variables.txt.
namespace support {

inline Eigen::VectorXd ToVector(const std::vector<double>& values) {
  return Eigen::Map<const Eigen::VectorXd>(values.data(), static_cast<Eigen::Index>(values.size()));
}

inline boost::shared_ptr<corvath::algorithm::RV> Make(int type) {
  return corvath::algorithm::RVFactory::GetInstance().Create(type);
}

inline boost::shared_ptr<corvath::algorithm::RV> WithParameters(int type,
                                                                const std::vector<double>& values) {
  const auto rv = Make(type);
  rv->SetParameters(ToVector(values));
  return rv;
}

/// @param values  the first moments; the others stay those of the type
inline boost::shared_ptr<corvath::algorithm::RV> WithStats(int type,
                                                           const std::vector<double>& values) {
  const auto rv = Make(type);
  Eigen::VectorXd moments = rv->GetStats();
  moments.head(static_cast<Eigen::Index>(values.size())) = ToVector(values);
  rv->SetStats(moments);
  return rv;
}

/// A line of variables.txt: type, parameters or moments, and what comes of them.
struct VariableLine {
  int type;
  std::vector<double> numbers;
  std::string outcome;
};

inline std::vector<double> ReadNumbers(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<double>(stream), {}};
}

/// The lines that begin with `kind`.
inline std::vector<VariableLine> LinesOf(const std::string& kind) {
  std::vector<VariableLine> lines;
  std::istringstream file(ReadFile(TEST_VARIABLES));
  for (std::string line, word, type; std::getline(file, line);) {
    std::istringstream words(line);
    if (!(words >> word >> type) || word != kind) continue;
    const std::size_t begin = kind.size() + type.size() + 2, arrow = line.find("=>");
    lines.push_back({corvath::enums::RandomVariable::FromText(corvath::utils::FromUtf8(type)),
                     ReadNumbers(line.substr(std::min(begin, line.size()), arrow - begin)),
                     arrow < line.size() - 2 ? line.substr(arrow + 3) : ""});
  }
  EXPECT_FALSE(lines.empty()) << kind;
  return lines;
}

template <class Action>
std::string RefusalOf(Action&& action) {
  return MessageOfExactly<corvath::utils::runtime_error>(action);
}

}  // namespace support
