// The one vector function of the engine: rows of products into columns.
#pragma once

#include <cstdint>

namespace omrel {

// One limb of a magnitude, or one column of products on its way to being one.
using Limb = std::uint64_t;

// How many rows add_rows adds at once, and what it needs around its operands.
constexpr int ROWS = 4;
constexpr int ROW_PADDING = 8;

// Adds lanes * (m[0] + m[1] B + m[2] B^2 + m[3] B^3) to the columns, B being one column:
// columns[i] += lanes[i] m[0] + lanes[i-1] m[1] + lanes[i-2] m[2] + lanes[i-3] m[3]
// for 0 <= i < count + 3, rounded up to a multiple of four.
//
// Operands: lanes and m below 2^32. lanes is read from -3 to count + 5, where the lanes outside
//           the operand are zero (or whatever the caller wants included).
// Columns:  arithmetic modulo 2^64; 1,844 rows of products below 10^16 each fit a column.
using AddRows = void (*)(Limb* columns, const Limb* lanes, int count, const Limb* m);
extern const AddRows add_rows;

}  // namespace omrel
