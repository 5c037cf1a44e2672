#pragma once

#include "variant/value/variant.h"

#include <cstdint>
#include <vector>

/// Functions that make or rearrange values. `result` is written on success alone and may be an
/// argument.
namespace corvath::math::functions {

/// A SIGNAL of an abscissa VECTOR or a signal, and further channels from VECTORs and signals; an
/// empty abscissa gives UNINITIALIZED.
void signal(Value& result, const std::vector<Value>& arguments);
/// XYDATA of two VECTORs; two empty ones give UNINITIALIZED.
void xydata(Value& result, const Value& x, const Value& y);
/// XYDATA of a MATRIX of two rows or of a SIGNAL of one channel.
void xydata(Value& result, const Value& x);
/// VECTOR of `count` equidistant numbers, by repeated addition of the step.
/// @throws CDomainException first > last or count < 2, CDimensionException count > kMaxEntries
void linspace(Value& result, double first, double last, std::uint64_t count);

/// Rows by number: a SCALAR index gives a VECTOR, a VECTOR of indices a MATRIX. Of a signal row 0
/// is the timeline and row k channel k - 1.
/// @throws CDomainException there is no such row
void extract(Value& result, const Value& x, const Value& index);
/// A real VECTOR ascending, a signal by ascending abscissa; NaN goes last.
void sort(Value& result, const Value& x);

}  // namespace corvath::math::functions
