// The vector functions of the engine: rows of products into columns, and limbs from digits and
// back.
#pragma once

#include <cstdint>
#include <vector>

namespace omrel {

// One limb of a magnitude, or one column of products on its way to being one.
using Limb = std::uint64_t;

// How many rows add_rows adds at once, and what it needs around its operands.
constexpr int ROWS = 8;
constexpr int ROW_PADDING = 12;

// Adds x * (y[0] + y[1] B + ... + y[7] B^7) to the columns, x being the multiplicand, y the
// multipliers and B one column:
// columns[i] += x[i] y[0] + x[i-1] y[1] + ... + x[i-7] y[7]
// for 0 <= i < count + 7, rounded up to a multiple of four.
//
// Operands: limbs below 2^32. The multiplicand is read from -7 to count + 9, where what is outside
//           of it is zero (or whatever the caller wants included).
// Columns:  arithmetic modulo 2^64.
using AddRows = void (*)(Limb* columns, const Limb* multiplicand, int count,
                         const Limb* multipliers);
extern const AddRows add_rows;

// Reads `count` limbs of eight digits each, or writes them: a limb is the number that a word of
// digits stands for; see digit_text.h.
using LoadLimbs = void (*)(Limb* limbs, const char* digits, int count);
using StoreLimbs = void (*)(char* digits, const Limb* limbs, int count);
extern const LoadLimbs load_limbs;
extern const StoreLimbs store_limbs;

// Every version of add_rows that this machine can run, the chosen one first.
std::vector<AddRows> add_rows_versions();

}  // namespace omrel
