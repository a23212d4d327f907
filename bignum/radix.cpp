// Radix conversion by halves (Knuth, The Art of Computer Programming, vol. 2, 4.4, method 1b with
// the splitting of exercise 14), from the bottom up: blocks of eight limbs are converted one limb
// at a time, then neighbours are joined, low + high * (source base)^(limbs of low), until one
// block is left. The powers depend on the level only and are kept for the process.
#include "bignum/radix.h"

#include <algorithm>
#include <bit>

namespace omrel {
namespace {

constexpr int BLOCK = 8;       // source limbs in a block of the lowest level
constexpr int BLOCK_ROOM = 9;  // target limbs for them: 10^64 < 2^(9 * 27) and 2^(8 * 27) < 10^72
constexpr int LEVELS = 7;      // BLOCK << LEVELS limbs can be joined
constexpr int MAX_BLOCKS = 1 << LEVELS;
static_assert(MAX_LIMBS <= BLOCK * MAX_BLOCKS);

struct Decimal {
  static constexpr Limb BASE = LIMB_BASE;
  static void carry(Limb* columns, int count) { carry_columns(columns, count); }
};

struct Binary {
  static constexpr Limb BASE = Limb{1} << BINARY_LIMB_BITS;
  static void carry(Limb* columns, int count) {
    Limb carry = 0;
    for (int i = 0; i < count; ++i) {
      const Limb total = columns[i] + carry;
      carry = total >> BINARY_LIMB_BITS;
      columns[i] = total & (BASE - 1);
    }
  }
};

// out = out * From::BASE + limb, out having `count` limbs of To.
template <class From, class To>
void append_limb(Limb* out, int count, Limb limb) {
  for (int i = 0; i < count; ++i) {
    const Limb total = out[i] * From::BASE + limb;
    limb = total / To::BASE;
    out[i] = total % To::BASE;
  }
}

// columns = low + high * power, `room` limbs of each half going in and twice as many coming out.
template <class To>
void join(Limb* columns, const Limb* low, const Limb* high, int room, const Magnitude& power) {
  std::copy_n(low, room, columns);
  std::fill_n(columns + room, room + ROW_PADDING, 0);
  int high_count = room;
  while (high_count > 0 && high[high_count - 1] == 0) --high_count;
  for (int j = 0; j < high_count; j += ROWS) {
    Limb m[ROWS] = {};
    std::copy_n(high + j, std::min(ROWS, high_count - j), m);
    add_rows(columns + j, power.limb(), power.count(), m);
  }
  To::carry(columns, 2 * room);
}

// entry[i] = (source base)^(BLOCK << i) in limbs of To.
template <class From, class To>
struct Powers {
  Magnitude entry[LEVELS];

  Powers() {
    Limb* first = entry[0].limb();
    std::fill_n(first, BLOCK_ROOM, 0);
    first[0] = 1;
    for (int i = 0; i < BLOCK; ++i) append_limb<From, To>(first, BLOCK_ROOM, 0);
    entry[0].set_count(BLOCK_ROOM);
    for (int i = 1; i < LEVELS; ++i) {
      Limb zero[BLOCK_ROOM << LEVELS] = {};
      Limb columns[(BLOCK_ROOM << LEVELS) + ROW_PADDING];
      const int room = entry[i - 1].count();
      join<To>(columns, zero, entry[i - 1].limb(), room, entry[i - 1]);
      std::copy_n(columns, 2 * room, entry[i].limb());
      entry[i].set_count(2 * room);
    }
  }
};

template <class From, class To>
void convert(Magnitude& target, const Magnitude& source) {
  static const Powers<From, To> powers;
  Limb work[BLOCK_ROOM * MAX_BLOCKS] = {};
  Limb columns[BLOCK_ROOM * MAX_BLOCKS + ROW_PADDING];
  int block_count = (source.count() + BLOCK - 1) / BLOCK;
  for (int i = source.count() - 1; i >= 0; --i) {
    append_limb<From, To>(work + i / BLOCK * BLOCK_ROOM, BLOCK_ROOM, source.limb()[i]);
  }
  int room = BLOCK_ROOM;
  for (int level = 0; block_count > 1; ++level, room *= 2) {
    for (Limb* low = work; low < work + (block_count - 1) * room; low += 2 * room) {
      join<To>(columns, low, low + room, room, powers.entry[level]);
      std::copy_n(columns, 2 * room, low);
    }
    block_count = (block_count + 1) / 2;
  }
  room = std::min(room, MAX_LIMBS);
  std::copy_n(work, room, target.limb());
  target.set_count(room);
}

}  // namespace

void to_binary(Magnitude& binary, const Magnitude& decimal) {
  convert<Decimal, Binary>(binary, decimal);
}

void to_decimal(Magnitude& decimal, const Magnitude& binary) {
  convert<Binary, Decimal>(decimal, binary);
}

int bit_count(const Magnitude& binary) {
  if (binary.is_zero()) return 0;
  const int top = binary.count() - 1;
  return top * BINARY_LIMB_BITS + static_cast<int>(std::bit_width(binary.limb()[top]));
}

}  // namespace omrel
