// Radix conversion. Short numbers go from the top down (Knuth, The Art of Computer Programming,
// vol. 2, 4.4, method 1b): the number so far times a power of the source base, plus the next few
// limbs, themselves a sum of limbs times small powers; one carry pass a step. Long ones are cut
// into blocks of that kind, and neighbours are joined, low + high * (source base)^(limbs of low),
// until one block is left (the same, exercise 14). The powers are kept for the process.
//
// A power of ten is kept without most of its factors of two, which are a shift: 10^(8 n) is
// (5^(8 n) 2^(8 n mod 26)) shifted by whole binary limbs, and a third shorter.
#include "bignum/magnitude/radix.h"

#include <algorithm>

namespace omrel {
namespace {

constexpr Limb BINARY_BASE = Limb{1} << LANE_BITS;

// The two ways. `settle` turns columns below 2^63 into something like limbs, not much above the
// base: good enough to go on with, and no carry waits for another. In front of those columns there
// are two zeros. `carry` makes limbs of columns, `carry_settled` of what has been settled.
struct ToBinary {
  static constexpr int CHUNK = 9;   // source limbs of a step: 5^72 2^(72 mod 26) < 2^(8 * 26)
  static constexpr int CHUNKS = 7;  // steps that make a block
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
      carry = total >> LANE_BITS;
      columns[i] = total & MASK;
    }
  }
  static void carry_settled(Limb* limbs, int count) { carry(limbs, count); }

  // Leaves limbs of up to 2^27 + 2^11.
  static void settle(Limb* __restrict target, const Limb* __restrict columns, int count) {
    for (int i = 0; i < count; ++i) {
      target[i] = (columns[i] & MASK) + ((columns[i - 1] >> LANE_BITS) & MASK) +
                  (columns[i - 2] >> (2 * LANE_BITS));
    }
  }

  static constexpr Limb MASK = TARGET - 1;
};

struct ToDecimal {
  static constexpr int CHUNK = 8;  // 2^(8 * 26) < 10^(8 * 8)
  static constexpr int CHUNKS = 8;
  static constexpr Limb SOURCE = BINARY_BASE;
  static constexpr Limb TARGET = LIMB_BASE;
  static constexpr Limb ODD_FACTOR = BINARY_BASE;  // no shift in the target
  static constexpr int FACTORS_OF_TWO = 0;

  // 2^26 < 10^8
  static constexpr int room(int n) { return n; }

  static void carry(Limb* columns, int count) { carry_columns(columns, count); }
  static void carry_settled(Limb* limbs, int count) { vectors.carry(limbs, count); }
  static void settle(Limb* target, const Limb* columns, int count) {
    vectors.settle(target, columns, count);
  }
};

// A power of the source base: a factor, padded, and whole limbs of the target base behind it.
struct Power {
  Limbs factor;
  int shift = 0;
};

// columns += x * y, x being padded.
void add_product(Limb* columns, const Limbs& x, const Limb* y, int y_count) {
  for (int j = 0; j < y_count; j += ROWS) {
    Limb multipliers[ROWS] = {};
    std::copy_n(y + j, std::min(ROWS, y_count - j), multipliers);
    vectors.add_rows(columns + j, x.limb(), x.count(), multipliers);
  }
}

Limbs single(Limb limb) {
  Limbs x;
  x.limb()[0] = limb;
  x.trim(1);
  return x;
}

// How often blocks of so many limbs are joined by twos until the longest number is one block.
constexpr int levels_of_joining(int block) {
  int levels = 0;
  while (block << levels < MAX_LIMBS) ++levels;
  return levels;
}

template <class Way>
struct Powers {
  static constexpr int CHUNK_ROOM = Way::room(Way::CHUNK);
  static constexpr int BLOCK = Way::CHUNK * Way::CHUNKS;
  static constexpr int LEVELS = levels_of_joining(BLOCK);
  static constexpr int HALF = BLOCK << (LEVELS - 1);  // what the last join starts from
  // The rows of a join: limbs below the target's base by settled ones, below twice that.
  static_assert(Limb{std::max(MAX_LIMBS - HALF, HALF / 2)} <
                (Limb{1} << 62) / Way::TARGET / Way::TARGET);

  Limb small[Way::CHUNK][CHUNK_ROOM];  // (source base)^i
  Power step;                          // (source base)^CHUNK, its factor of at most ROWS limbs
  Power joining[LEVELS];               // (source base)^(BLOCK << level)

  Powers() {
    Limb power[CHUNK_ROOM] = {1};
    for (int i = 0; i < Way::CHUNK; ++i) {
      if (i > 0) {
        for (Limb& limb : power) limb *= Way::SOURCE;
        Way::carry(power, CHUNK_ROOM);
      }
      std::copy_n(power, CHUNK_ROOM, small[i]);
    }
    const Limbs chunk = odd_power(single(Way::ODD_FACTOR % Way::TARGET), Way::CHUNK);
    set(step, chunk, Way::CHUNK);
    Limbs odd = odd_power(chunk, Way::CHUNKS);
    for (int level = 0; level < LEVELS; ++level) {
      set(joining[level], odd, BLOCK << level);
      if (level + 1 < LEVELS) odd = product(odd, odd);
    }
  }

 private:
  static Limbs odd_power(const Limbs& x, int n) {
    Limbs result = single(1);
    for (int i = 0; i < n; ++i) result = product(result, x);
    return result;
  }

  // The power of the source base whose odd part is given, `limbs` of them.
  static void set(Power& power, const Limbs& odd, int limbs) {
    const int twos = Way::FACTORS_OF_TWO * limbs;
    power.factor = product(odd, single(Limb{1} << twos % LANE_BITS));
    power.factor.pad();
    power.shift = twos / LANE_BITS;
  }

  static Limbs product(Limbs x, const Limbs& y) {
    Limbs result;
    const int count = x.count() + y.count();
    x.pad();
    std::fill_n(result.limb(), count + ROW_PADDING, 0);
    add_product(result.limb(), x, y.limb(), y.count());
    Way::carry(result.limb(), count);
    result.trim(count);
    return result;
  }
};

// columns = a chunk, CHUNK_ROOM columns, not carried.
template <class Way>
void sum_chunk(Limb* columns, const Limb* source, const Powers<Way>& powers) {
  constexpr int MORE = Powers<Way>::CHUNK_ROOM - Way::CHUNK;
  // The i-th power has no more limbs than i + 1 + MORE.
#pragma GCC unroll 16
  for (int k = 0; k < Way::CHUNK + MORE; ++k) {
    Limb sum = 0;
#pragma GCC unroll 16
    for (int i = std::max(k - MORE, 0); i < Way::CHUNK; ++i) sum += source[i] * powers.small[i][k];
    columns[k] = sum;
  }
}

// Converts up to BLOCK source limbs, with zeros behind them up to whole chunks, into room(count)
// limbs; it may write zeros into one more, or into as many as a chunk has.
template <class Way>
void convert_block(Limb* target, const Limb* source, int count, const Powers<Way>& powers) {
  constexpr int CHUNK = Way::CHUNK;
  constexpr int CHUNK_ROOM = Powers<Way>::CHUNK_ROOM;
  constexpr int BLOCK_ROOM = Way::room(Powers<Way>::BLOCK) + CHUNK_ROOM;
  Limb padded[BLOCK_ROOM + 2 * ROW_PADDING];
  Limb storage[2 + BLOCK_ROOM + 2 * ROW_PADDING];
  Limb* columns = storage + 2;
  columns[-2] = columns[-1] = 0;
  std::fill_n(padded, Way::room(count) + CHUNK_ROOM + 2 * ROW_PADDING, 0);
  int i = (count - 1) / CHUNK * CHUNK;
  Limb* so_far = i == 0 ? target : padded + ROW_PADDING;
  sum_chunk(so_far, source + i, powers);
  Way::carry(so_far, CHUNK_ROOM);
  const Limb* factor = powers.step.factor.limb();
  for (int room = CHUNK_ROOM; i > 0;) {
    i -= CHUNK;
    sum_chunk(columns, source + i, powers);
    const int wide_room = Way::room(count - i) + CHUNK_ROOM - CHUNK;
    std::fill_n(columns + CHUNK_ROOM, wide_room + ROW_PADDING - CHUNK_ROOM, 0);
    vectors.add_rows(columns + powers.step.shift, so_far, room, factor);
    Way::settle(i == 0 ? target : so_far, columns, wide_room);
    room = wide_room;
  }
}

// target = low + high * power, of `room` limbs each, the result of at most `wide_room`; the target
// may be where low is, or before it.
template <class Way>
void join(Limb* target, const Limb* low, int room, int wide_room, const Power& power) {
  const Limb* high = low + room;
  int high_count = room;
  while (high_count > 0 && high[high_count - 1] == 0) --high_count;
  Limb storage[2 + 2 * MAX_LIMBS + 2 * ROW_PADDING];
  Limb* columns = storage + 2;
  columns[-2] = columns[-1] = 0;
  std::copy_n(low, room, columns);
  std::fill_n(columns + room, wide_room - room + ROW_PADDING, 0);
  add_product(columns + power.shift, power.factor, high, high_count);
  Way::settle(target, columns, wide_room);
}

template <class Way>
void convert(Limbs& target, Limbs& source) {
  static const Powers<Way> powers;
  constexpr int BLOCK = Powers<Way>::BLOCK;
  static_assert(Way::CHUNK <= ROW_PADDING);
  source.pad();
  Limb work[(Way::room(BLOCK) << Powers<Way>::LEVELS) + Powers<Way>::CHUNK_ROOM];
  int room = Way::room(BLOCK);
  int blocks = std::max((source.count() + BLOCK - 1) / BLOCK, 1);  // one of zeros for zero
  for (int i = 0; i < blocks; ++i) {
    const int count = std::min(BLOCK, source.count() - i * BLOCK);
    Limb* block = work + i * room;
    convert_block(block, source.limb() + i * BLOCK, count, powers);
    std::fill(block + Way::room(count), block + room, 0);
  }
  for (int level = 0; blocks > 1; ++level) {
    const int wide_room = Way::room(BLOCK << (level + 1));
    if (blocks % 2 != 0) std::fill_n(work + blocks++ * room, room, 0);
    blocks /= 2;
    for (int i = 0; i < blocks; ++i) {
      join<Way>(work + i * wide_room, work + 2 * i * room, room, wide_room, powers.joining[level]);
    }
    room = wide_room;
  }
  room = std::min(room, Way::room(source.count()));
  std::copy_n(work, room, target.limb());
  Way::carry_settled(target.limb(), room);
  target.trim(room);
}

}  // namespace

void to_binary(Lanes& lanes, Magnitude& decimal) { convert<ToBinary>(lanes, decimal); }

void to_decimal(Magnitude& decimal, Lanes& lanes) { convert<ToDecimal>(decimal, lanes); }

}  // namespace omrel
