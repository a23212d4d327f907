// The vector functions of the engine: rows of products into columns, columns into limbs, and limbs
// from digits and back.
#pragma once

#include <cstdint>
#include <vector>

namespace omrel {

// One limb of a magnitude, or one column of products on its way to being one.
using Limb = std::uint64_t;

constexpr Limb LIMB_BASE = 100'000'000;

// How many rows add_rows adds at once, and what it needs around its operands.
constexpr int ROWS = 8;
constexpr int ROW_PADDING = 14;

// From so many columns or limbs on, settling or carrying them in vectors pays.
constexpr int MANY_COLUMNS = 16;

// One version of them all. Where it says "whole vectors", a function goes on behind the last limb
// or column, to a multiple of eight of them.
struct VectorFunctions {
  // Adds x * (y[0] + y[1] B + ... + y[7] B^7) to the columns, x being the multiplicand, y the
  // multipliers and B one column:
  // columns[i] += x[i] y[0] + x[i-1] y[1] + ... + x[i-7] y[7]
  // for 0 <= i < count + 7, in whole vectors.
  //
  // Operands: limbs below 2^32. The multiplicand is read from -8 to count + 13, where what is
  //           outside of it is zero (or whatever the caller wants included).
  // Columns:  arithmetic modulo 2^64.
  void (*add_rows)(Limb* columns, const Limb* multiplicand, int count, const Limb* multipliers);

  // Turns columns, from the lowest up, into limbs but for carries of one: limbs below
  // LIMB_BASE + 2^12, of which none waits for the one before. Whole vectors; a carry out of the
  // last one is dropped. The limbs may be where the columns are.
  void (*settle)(Limb* limbs, const Limb* columns, int count);

  // Carries what limbs below 2 * LIMB_BASE have above it. Whole vectors, as settle.
  void (*carry)(Limb* limbs, int count);

  // Reads `count` limbs of eight digits each, or writes them: a limb is the number that a word of
  // digits stands for; see digit_text.h.
  void (*load)(Limb* limbs, const char* digits, int count);
  void (*store)(char* digits, const Limb* limbs, int count);
};
extern const VectorFunctions vectors;

// Every version that this machine can run, the chosen one first.
std::vector<VectorFunctions> vector_versions();

}  // namespace omrel
