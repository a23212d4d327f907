// The MT19937 generator behind random values.
//
// State: the generator's words, their position, and whether it has been seeded (random.cpp).
#pragma once

#include <cstdint>

namespace omrel {

// Seeds the generator; the next draw makes a new block of words.
void mt_init(std::uint32_t seed);

// Seeds the generator, from the time of day in UTC when the seed is 0.
void mt_randomize(std::uint32_t seed);

// Returns a number from lo to hi, both included, in either order. Equal bounds draw nothing; the
// first draw of a process seeds the generator from the clock.
std::int32_t mt_range(std::int32_t lo, std::int32_t hi);

}  // namespace omrel
