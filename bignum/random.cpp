// Random values. A draw is a number of random digits of a random count, so values are not evenly
// spread: between 0 and 100 a draw has one digit or two, 100 never comes out, and each value below
// 10 comes out eleven times as often as one above.
//
// The generator is MT19937 (M. Matsumoto and T. Nishimura, Mersenne Twister, ACM Transactions on
// Modeling and Computer Simulation 8, 1998) with the initialisation of the authors' 2002 version.
// Not for secrets.
#include "bignum/random.h"

#include <algorithm>
#include <cstring>

#include "bignum/bignum.h"
#include "bignum/buffers.h"
#include "bignum/digit_text.h"
#include "support/console.h"
#include "support/platform.h"
#include "support/text.h"

namespace omrel {
namespace {

constexpr int WORDS = 624;
constexpr int MIDDLE = 397;
constexpr int MAX_ATTEMPTS = 65'535;

std::uint32_t words[WORDS];
int position = WORDS + 1;
bool seeded = false;

std::uint32_t twisted(std::uint32_t high, std::uint32_t low, std::uint32_t middle) {
  const std::uint32_t y = (high & 0x80000000) | (low & 0x7FFFFFFF);
  return middle ^ (y >> 1) ^ ((y & 1) != 0 ? 0x9908B0DF : 0);
}

// Makes the words that come after the 624 there are, and takes those off the position.
void make_words() {
  int i = 0;
  for (; i < WORDS - MIDDLE; ++i) words[i] = twisted(words[i], words[i + 1], words[i + MIDDLE]);
  for (; i < WORDS - 1; ++i) {
    words[i] = twisted(words[i], words[i + 1], words[i + MIDDLE - WORDS]);
  }
  words[i] = twisted(words[i], words[0], words[MIDDLE - 1]);
  position -= WORDS;
}

std::uint32_t next_output() {
  if (position >= WORDS) make_words();
  std::uint32_t y = words[position++];
  y ^= y >> 11;
  y ^= (y << 7) & 0x9D2C5680;
  y ^= (y << 15) & 0xEFC60000;
  return y ^ (y >> 18);
}

// Draws numbers without looking at them.
void skip_outputs(int count) {
  if (!seeded) mt_randomize(0);
  position += count;
  while (position > WORDS) make_words();
}

// Attempts at a value between two bounds. Every attempt draws as many numbers as it has digits,
// but the digits are looked at only as far as they can still make a value that is accepted.
class Attempts {
 public:
  Attempts(const bignum& lower, const bignum& upper)
      : low(lower),
        high(upper),
        max_digits(std::max(upper.length - lower.length, 1)),
        hopeless(upper.negative != 0 || lower > upper),
        least_digits(lower.negative != 0 ? 0 : digits_of(lower)),
        most_digits(digits_of(upper)) {}

  // One attempt: a draw, and the draw without its lowest digit. Returns whether `candidate` lies
  // between the bounds.
  bool succeeds(bignum& candidate) const {
    const int n = mt_range(1, max_digits);
    if (hopeless || n < least_digits) {
      skip_outputs(n);
      return false;
    }
    // The digits are drawn from the highest down.
    bool leading = true;
    for (int i = n - 1; i >= 0; --i) {
      candidate.vlstr[i] = static_cast<char>(mt_range('0', '9'));
      leading = leading && candidate.vlstr[i] == '0';
      if (!leading && i > most_digits) {  // too many digits, even without the lowest
        skip_outputs(i);
        return false;
      }
    }
    candidate.end_digits(n, 0);
    if (candidate > high) candidate.drop_digit();
    return candidate >= low && candidate <= high;
  }

 private:
  // The object's own characters are gone when it is a bound, too.
  static int digits_of(const bignum& b) { return significant_length(b.vlstr, b.text_length()); }

  const bignum& low;
  const bignum& high;
  const int max_digits;
  const bool hopeless;     // no value is between the bounds, or only negative ones
  const int least_digits;  // a shorter draw is below the lower bound
  const int most_digits;   // of the upper bound
};

}  // namespace

void mt_init(std::uint32_t seed) {
  words[0] = seed;
  for (std::uint32_t i = 1; i < WORDS; ++i) {
    words[i] = 1812433253U * (words[i - 1] ^ (words[i - 1] >> 30)) + i;
  }
  position = WORDS;
  seeded = true;
}

void mt_randomize(std::uint32_t seed) {
  if (seed == 0) {
    const platform::TimeOfDay now = platform::utc_time();
    seed = (now.milliseconds + 1U) * (now.seconds + 1U) * ((now.minutes + 1U) * 60U);
  }
  mt_init(seed);
}

std::int32_t mt_range(std::int32_t lo, std::int32_t hi) {
  if (lo == hi) return lo;
  if (lo > hi) swap_words(lo, hi);
  if (!seeded) mt_randomize(0);
  const std::uint32_t y = next_output();
  const std::uint32_t span = static_cast<std::uint32_t>(hi) - static_cast<std::uint32_t>(lo) + 1;
  if (span == 0) return 0;
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(lo) + y % span);
}

bignum bignum::rnd(const bignum& low, const bignum& high) {
  if (low.length <= 0 || high.length <= 0) return bignum(0);
  if (vlstr == nullptr) fatal_exit("vlstr is NULL in bignum::rnd()\n", 0);
  std::memset(vlstr, '\0', (MAX_DIGITS + 7) / 8 * 8);  // whole words: what is drawn is padded
  plain = false;                                       // no characters, whatever the length
  const Attempts attempts(low, high);
  bignum candidate;
  for (int count = 0; count < MAX_ATTEMPTS; ++count) {
    if (attempts.succeeds(candidate)) {
      length = candidate.length;
      plain = true;
      copy_text_n(vlstr, candidate.vlstr, static_cast<std::size_t>(length));
      return candidate;
    }
  }
  return low;
}

}  // namespace omrel
