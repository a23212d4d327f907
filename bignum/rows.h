// The one vector function of the engine: rows of products into columns.
#pragma once

#include <cstdint>
#include <vector>

namespace omrel {

// One limb of a magnitude, or one column of products on its way to being one.
using Limb = std::uint64_t;

// How many rows add_rows adds at once, and what it needs around its operands.
constexpr int ROWS = 8;
constexpr int ROW_PADDING = 12;

// Adds lanes * (m[0] + m[1] B + ... + m[7] B^7) to the columns, B being one column:
// columns[i] += lanes[i] m[0] + lanes[i-1] m[1] + ... + lanes[i-7] m[7]
// for 0 <= i < count + 7, rounded up to a multiple of four.
//
// Operands: lanes and m below 2^32. lanes is read from -7 to count + 9, where the lanes outside
//           the operand are zero (or whatever the caller wants included).
// Columns:  arithmetic modulo 2^64; 1,844 rows of products below 10^16 each fit a column.
using AddRows = void (*)(Limb* columns, const Limb* lanes, int count, const Limb* m);
extern const AddRows add_rows;

// Every version that this machine can run, the chosen one first.
std::vector<AddRows> add_rows_versions();

}  // namespace omrel
