#include "support/files.h"
#include "support/read_value.h"
#include "variant/functions/linear_algebra.h"
#include "variant/functions/ordering.h"
#include "variant/functions/reductions.h"
#include "variant/operators/arithmetic.h"
#include "variant/operators/binary_functions.h"
#include "variant/operators/elementwise.h"
#include "variant/value/complex_parts.h"
#include "variant/value/constructors.h"

namespace corvath::math {
namespace {

namespace fn = functions;

using Unary = void (*)(Value&, const Value&);
using Binary = void (*)(Value&, const Value&, const Value&);

const std::map<std::string, Unary> kUnary{{"atan2", fn::atan2},
                                          {"cart2pol", fn::cart2pol},
                                          {"euklidnorm", fn::euklidnorm},
                                          {"invert", fn::invert},
                                          {"lufactorize", fn::lufactorize},
                                          {"max", fn::max},
                                          {"mean", fn::mean},
                                          {"min", fn::min},
                                          {"not", Not},
                                          {"pol2cart", fn::pol2cart},
                                          {"sgn", fn::sgn},
                                          {"sort", fn::sort},
                                          {"stddev", fn::stddev},
                                          {"sum", fn::sum},
                                          {"transpose", fn::transpose},
                                          {"xydata", fn::xydata}};

const std::map<std::string, Binary> kBinary{{"*", Multiply},
                                            {"+", Add},
                                            {"-", Subtract},
                                            {"/", Divide},
                                            {"and", And},
                                            {"atan2", fn::atan2},
                                            {"cplx", fn::cplx},
                                            {"extract", fn::extract},
                                            {"innerprod", fn::innerprod},
                                            {"matrixmult", fn::matrixmult},
                                            {"mod", fn::mod},
                                            {"or", Or},
                                            {"outerprod", fn::outerprod},
                                            {"pow", fn::pow},
                                            {"times", fn::times},
                                            {"xydata", fn::xydata}};

/// `got` as far as `expected` says it.
void ExpectOutcome(std::string got, std::string expected) {
  if (expected.find(": ") == std::string::npos) {
    expected = support::Text(support::ReadValue(expected));
  } else if (expected.size() > 3 && expected.substr(expected.size() - 3) == "...") {
    expected.resize(expected.size() - 3);
    got.resize(std::min(got.size(), expected.size()));
  }
  EXPECT_EQ(got, expected);
}

TEST(Outcomes, AreThoseOfTheFile) {
  std::istringstream file(support::ReadFile(TEST_OUTCOMES));
  const std::regex form(R"((\S+) (\S+)( (\S+))? => (.*))");
  std::smatch parts;
  int line_number = 0, num_cases = 0;
  for (std::string line; std::getline(file, line);) {
    SCOPED_TRACE(std::string(TEST_OUTCOMES) + ":" + std::to_string(++line_number) + ": " + line);
    if (line.empty() || line.substr(0, 2) == "//") continue;
    ASSERT_TRUE(std::regex_match(line, parts, form));
    ++num_cases;
    const Value first = support::ReadValue(parts[2]);
    if (parts[4].matched)
      ExpectOutcome(support::Out(kBinary.at(parts[1]), first, support::ReadValue(parts[4])),
                    parts[5]);
    else
      ExpectOutcome(support::Out(kUnary.at(parts[1]), first), parts[5]);
  }
  EXPECT_GT(num_cases, 300);
}

}  // namespace
}  // namespace corvath::math
