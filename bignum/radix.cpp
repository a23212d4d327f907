// Radix conversion by halves (Knuth, The Art of Computer Programming, vol. 2, 4.4, method 1b with
// the splitting of exercise 14), from the bottom up: blocks of a few limbs are sums of limbs times
// powers of the source base, with a single carry pass; then neighbours are joined, low + high *
// (source base)^(limbs of low), until one block is left. The powers are kept for the process.
//
// A power of ten is kept without most of its factors of two, which are a shift: 10^(8 n) is
// (5^(8 n) 2^(8 n mod 26)) shifted by whole binary limbs, and a third shorter.
#include "bignum/radix.h"

#include <algorithm>
#include <bit>

namespace omrel {
namespace {

constexpr int BLOCK = 8;   // source limbs in a block of the lowest level
constexpr int LEVELS = 7;  // of joining
constexpr int MAX_SOURCE = BLOCK << LEVELS;
static_assert(MAX_LIMBS <= MAX_SOURCE);
static_assert(BLOCK <= ROW_PADDING);  // the top block reads zeros above the number
constexpr Limb BINARY_BASE = Limb{1} << BINARY_LIMB_BITS;

struct ToBinary {
  static constexpr Limb SOURCE = LIMB_BASE;
  static constexpr Limb TARGET = BINARY_BASE;
  static constexpr Limb ODD_FACTOR = 390'625;  // of SOURCE; the rest is 2^8
  static constexpr int FACTORS_OF_TWO = 8;

  // Target limbs for n source limbs: 10^8 < 2^(26 + 26 / 32).
  static constexpr int room(int n) { return n + n / 32 + 1; }

  static void carry(Limb* columns, int count) {
    Limb carry = 0;
    for (int i = 0; i < count; ++i) {
      const Limb total = columns[i] + carry;
      carry = total >> BINARY_LIMB_BITS;
      columns[i] = total & (TARGET - 1);
    }
  }

  // Leaves limbs of up to 2^26 + 2^12: good enough to go on with, and no carry waits for another.
  static void settle(Limb* target, Limb* columns, int count) {
    columns[-1] = 0;
    for (int i = count - 1; i >= 0; --i) {
      columns[i] = (columns[i] & (TARGET - 1)) + (columns[i - 1] >> BINARY_LIMB_BITS);
    }
    for (int i = 0; i < count; ++i) {
      target[i] = (columns[i] & (TARGET - 1)) + (columns[i - 1] >> BINARY_LIMB_BITS);
    }
  }
};

struct ToDecimal {
  static constexpr Limb SOURCE = BINARY_BASE;
  static constexpr Limb TARGET = LIMB_BASE;
  static constexpr Limb ODD_FACTOR = BINARY_BASE;  // no shift in the target
  static constexpr int FACTORS_OF_TWO = 0;

  // 2^26 < 10^8
  static constexpr int room(int n) { return n; }

  static void carry(Limb* columns, int count) { carry_columns(columns, count); }
  static void settle(Limb* target, Limb* columns, int count) {
    carry_columns(columns, count);
    std::copy_n(columns, count, target);
  }
};

// (source base)^(BLOCK << level): a factor, and whole limbs of the target base behind it.
struct Power {
  Magnitude factor;
  int shift = 0;
};

// columns += x * y, x having zeros around it as add_rows wants them.
void add_product(Limb* columns, const Magnitude& x, const Limb* y, int y_count) {
  for (int j = 0; j < y_count; j += ROWS) {
    Limb m[ROWS] = {};
    std::copy_n(y + j, std::min(ROWS, y_count - j), m);
    add_rows(columns + j, x.limb(), x.count(), m);
  }
}

template <class Way>
struct Powers {
  static constexpr int BLOCK_ROOM = Way::room(BLOCK);

  Limb small[BLOCK][BLOCK_ROOM];  // (source base)^i
  Power entry[LEVELS];

  Powers() {
    Limb power[BLOCK_ROOM] = {1};
    for (auto& entry_of_i : small) {
      for (int k = 0; k < BLOCK_ROOM; ++k) {
        entry_of_i[k] = power[k];
        power[k] *= Way::SOURCE;
      }
      if (&entry_of_i != &small[BLOCK - 1]) Way::carry(power, BLOCK_ROOM);
    }
    Magnitude odd(1);  // the odd factor to the power BLOCK << level
    for (int i = 0; i < BLOCK; ++i) odd = product(odd, Way::ODD_FACTOR);
    for (int level = 0; level < LEVELS; ++level) {
      const int twos = Way::FACTORS_OF_TWO * (BLOCK << level);
      entry[level].factor = product(odd, Limb{1} << twos % BINARY_LIMB_BITS);
      entry[level].shift = twos / BINARY_LIMB_BITS;
      odd = product(odd, odd);
    }
  }

 private:
  static Magnitude product(const Magnitude& x, const Magnitude& y) {
    Magnitude result;
    const int count = x.count() + y.count();
    std::fill_n(result.limb(), count + ROW_PADDING, 0);
    add_product(result.limb(), x, y.limb(), y.count());
    Way::carry(result.limb(), count);
    result.set_count(count);
    return result;
  }
  static Magnitude product(const Magnitude& x, Limb factor) {
    Magnitude y;
    y.limb()[0] = factor % Way::TARGET;
    y.limb()[1] = factor / Way::TARGET;
    y.set_count(2);
    return product(x, y);
  }
};

// Converts a block, `count` source limbs of it.
template <class Way>
void convert_block(Limb* target, const Limb* source, int count, const Powers<Way>& powers) {
  constexpr int ROOM = Powers<Way>::BLOCK_ROOM;
  Limb sum[ROOM] = {};
  for (int i = 0; i < count; ++i) {
    // The i-th power has no more limbs than this.
    for (int k = 0; k <= i + ROOM - BLOCK; ++k) sum[k] += source[i] * powers.small[i][k];
  }
  for (int k = 0; k < ROOM; ++k) target[k] = sum[k];
  Way::carry(target, ROOM);
}

// target = low + high * power, of `room` limbs each, the result of at most `wide_room`; the target
// may be where low is, or before it.
template <class Way>
void join(Limb* target, const Limb* low, int room, int wide_room, const Power& power) {
  const Limb* high = low + room;
  int high_count = room;
  while (high_count > 0 && high[high_count - 1] == 0) --high_count;
  Limb storage[1 + 2 * MAX_LIMBS + 2 * ROW_PADDING];
  Limb* columns = storage + 1;
  std::copy_n(low, room, columns);
  std::fill_n(columns + room, wide_room - room + ROW_PADDING, 0);
  add_product(columns + power.shift, power.factor, high, high_count);
  Way::settle(target, columns, wide_room);
}

template <class Way>
void convert(Magnitude& target, const Magnitude& source) {
  static const Powers<Way> powers;
  int room = Way::room(BLOCK);
  Limb work[Way::room(BLOCK) << LEVELS];
  int blocks = std::max((source.count() + BLOCK - 1) / BLOCK, 1);
  for (int i = 0; i < blocks; ++i) {
    const int count = std::min(BLOCK, source.count() - i * BLOCK);
    convert_block(work + i * room, source.limb() + i * BLOCK, count, powers);
  }
  for (int level = 0; blocks > 1; ++level) {
    const int wide_room = Way::room(BLOCK << (level + 1));
    if (blocks % 2 != 0) std::fill_n(work + blocks++ * room, room, 0);
    blocks /= 2;
    for (int i = 0; i < blocks; ++i) {
      join<Way>(work + i * wide_room, work + 2 * i * room, room, wide_room, powers.entry[level]);
    }
    room = wide_room;
  }
  room = std::min(room, MAX_LIMBS);
  std::copy_n(work, room, target.limb());
  Way::carry(target.limb(), room);
  target.set_count(room);
}

}  // namespace

void to_binary(Magnitude& binary, const Magnitude& decimal) { convert<ToBinary>(binary, decimal); }

void to_decimal(Magnitude& decimal, const Magnitude& binary) {
  convert<ToDecimal>(decimal, binary);
}

int bit_count(const Magnitude& binary) {
  if (binary.is_zero()) return 0;
  const int top = binary.count() - 1;
  return top * BINARY_LIMB_BITS + static_cast<int>(std::bit_width(binary.limb()[top]));
}

}  // namespace omrel
