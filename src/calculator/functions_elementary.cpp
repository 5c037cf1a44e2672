#include "calculator/function_adaptors.h"
#include "calculator/function_call.h"
#include "calculator/function_table.h"
#include "variant/binary_functions.h"
#include "variant/complex_parts.h"
#include "variant/elementwise.h"
#include "variant/linear_algebra.h"
#include "variant/modal.h"
#include "variant/random_values.h"
#include "variant/reductions.h"

#include <initializer_list>

// Mathematics of numbers: element by element, complex parts, statistics, linear algebra,
// modal comparison.
namespace corvath::calculator {

namespace {

namespace fn = math::functions;
using math::Value;

/// min and max: of one argument, or of a list of numbers.
template <void (*Of)(Value&, const std::vector<Value>&)>
void Extreme(FunctionCall& call, Value& result) {
  if (call.Count() == 0) call.RaiseWrongCount();
  Of(result, call.EvaluateAll());
}

void Round(FunctionCall& call, Value& result) {
  const Value x = call.Evaluate(0);
  fn::round(result, x, call.Count() == 1 ? 0 : call.Integer(1));
}

void Atan2(FunctionCall& call, Value& result) {
  const Value y = call.Evaluate(0);
  if (call.Count() == 1)
    fn::atan2(result, y);
  else
    fn::atan2(result, y, call.Evaluate(1));
}

void Norm(FunctionCall& call, Value& result) {
  const Value x = call.Evaluate(0);
  if (call.Count() == 1)
    fn::norm(result, x);
  else
    fn::norm(result, x, call.Unsigned(1));
}

void Rand(FunctionCall& call, Value& result) {
  const Value x = call.Evaluate(0);
  const int distribution = call.Integer(1);
  fn::rand(result, x, distribution, call.Evaluate(2), call.GetGenerator());
}

/// A function of one matrix that takes cubic time.
template <void (*Of)(Value&, const Value&)>
void Factorised(FunctionCall& call, Value& result) {
  Value storage;
  const Value& x = call.Borrow(0, storage);
  if (x.IsMatrix()) call.CountMultiplications(std::uint64_t{x.Size()} * x.Size1());
  Of(result, x);
}

std::uint64_t ProductWork(const Value& a, const Value& b) {
  return std::uint64_t{a.Size()} * (b.IsMatrix() ? b.Size2() : 1);
}
/// For each pair of columns.
std::uint64_t ColumnWork(const Value& a, const Value& b) {
  return std::uint64_t{a.Size()} * b.Size2();
}
/// For each pair of rows.
std::uint64_t RowWork(const Value& a, const Value& b) {
  return std::uint64_t{a.Size()} * b.Size1();
}

/// A function of two matrices whose multiplications `Work` tells.
template <void (*Of)(Value&, const Value&, const Value&),
          std::uint64_t (*Work)(const Value&, const Value&)>
void OfMatrices(FunctionCall& call, Value& result) {
  const Value a = call.Evaluate(0);
  Value storage;
  const Value& b = call.Borrow(1, storage);
  if (!a.IsUninitialized() && !b.IsUninitialized()) call.CountMultiplications(Work(a, b));
  Of(result, a, b);
}

void ModePairs(FunctionCall& call, Value& result) {
  const Value a = call.Evaluate(0);
  const Value b = call.Evaluate(1);
  const Value limit = call.Evaluate(2);
  if (a.IsMatrix() && b.IsMatrix()) call.CountMultiplications(ColumnWork(a, b));
  fn::modepairs(result, a, b, limit);
}

struct UnaryEntry {
  const wchar_t* name;
  void (*run)(FunctionCall&, Value&);
};

}  // namespace

void AddElementaryFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  const auto add_unary = [&](Group group, std::initializer_list<UnaryEntry> entries) {
    for (const auto& [name, run] : entries) table.Add(group, {name}, {1}, run);
  };
  add_unary(Group::kElementary,
            {
                {L"sin", Unary<fn::sin>},         {L"cos", Unary<fn::cos>},
                {L"tan", Unary<fn::tan>},         {L"asin", Unary<fn::asin>},
                {L"acos", Unary<fn::acos>},       {L"atan", Unary<fn::atan>},
                {L"sinh", Unary<fn::sinh>},       {L"cosh", Unary<fn::cosh>},
                {L"tanh", Unary<fn::tanh>},       {L"asinh", Unary<fn::asinh>},
                {L"acosh", Unary<fn::acosh>},     {L"atanh", Unary<fn::atanh>},
                {L"deg2rad", Unary<fn::deg2rad>}, {L"rad2deg", Unary<fn::rad2deg>},
                {L"log", Unary<fn::log>},         {L"ln", Unary<fn::ln>},
                {L"exp", Unary<fn::exp>},         {L"sqrt", Unary<fn::sqrt>},
                {L"sgn", Unary<fn::sgn>},         {L"ceil", Unary<fn::ceil>},
                {L"floor", Unary<fn::floor>},
            });
  table.Add(Group::kElementary, {L"atan2"}, {1, 2}, Atan2);
  table.Add(Group::kElementary, {L"mod"}, {2}, Binary<fn::mod>);
  table.Add(Group::kElementary, {L"round"}, {1, 2}, Round);
  table.Add(Group::kElementary, {L"min"}, {Function::kAnyCount}, Extreme<fn::min>);
  table.Add(Group::kElementary, {L"max"}, {Function::kAnyCount}, Extreme<fn::max>);
  table.Add(Group::kElementary, {L"rand"}, {3}, Rand);

  add_unary(Group::kStatistics, {
                                    {L"sum", Unary<fn::sum>},
                                    {L"mean", Unary<fn::mean>},
                                    {L"stddev", Unary<fn::stddev>},
                                });

  add_unary(Group::kComplex, {
                                 {L"conj", Unary<fn::conj>},
                                 {L"abs", Unary<fn::abs>},
                                 {L"arg", Unary<fn::arg>},
                                 {L"real", Unary<fn::real>},
                                 {L"imag", Unary<fn::imag>},
                                 {L"pol2cart", Unary<fn::pol2cart>},
                                 {L"cart2pol", Unary<fn::cart2pol>},
                             });
  table.Add(Group::kComplex, {L"cplx"}, {2}, Binary<fn::cplx>);
  table.Add(Group::kComplex, {L"norm"}, {1, 2}, Norm);

  add_unary(Group::kLinearAlgebra, {
                                       {L"transpose", Unary<fn::transpose>},
                                       {L"invert", Factorised<fn::invert>},
                                       {L"euklidnorm", Unary<fn::euklidnorm>},
                                       {L"lufactorize", Factorised<fn::lufactorize>},
                                   });
  table.Add(Group::kLinearAlgebra, {L"innerprod"}, {2}, Binary<fn::innerprod>);
  table.Add(Group::kLinearAlgebra, {L"outerprod"}, {2}, Binary<fn::outerprod>);
  table.Add(Group::kLinearAlgebra, {L"matrixmult"}, {2}, OfMatrices<fn::matrixmult, ProductWork>);
  table.Add(Group::kLinearAlgebra, {L"times"}, {2}, Binary<fn::times>);

  table.Add(Group::kModal, {L"mac"}, {2}, OfMatrices<fn::mac, ColumnWork>);
  table.Add(Group::kModal, {L"comac"}, {2}, OfMatrices<fn::comac, RowWork>);
  table.Add(Group::kModal, {L"sdi"}, {2}, OfMatrices<fn::sdi, ColumnWork>);
  table.Add(Group::kModal, {L"modepairs"}, {3}, ModePairs);

  add_unary(Group::kQueries, {
                                 {L"inf2nan", Unary<fn::inf2nan>},
                             });
}

}  // namespace corvath::calculator
