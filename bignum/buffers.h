// Digit buffers: the memory behind every bignum, kept for reuse in a short list.
#pragma once

#include <cstddef>
#include <cstdlib>

#include "bignum/digit_text.h"

namespace omrel {

// What a digit buffer has beyond its 6,501 bytes: room for a magnitude that was lengthened, stored
// in whole limbs of eight digits, and for a kernel that works in whole words on the last digits of
// a text.
constexpr int BUFFER_BYTES = MAX_DIGITS + 1 + 67;

// A stack of returned buffers, bounded, so that a run of calls allocates nothing: most calls use
// three to five values. What is beyond the bound goes back to the heap at once, and the rest when
// the library is unloaded.
struct FreeBuffers {
  static constexpr std::size_t MAX_KEPT = 12;

  char* kept[MAX_KEPT];
  std::size_t count = 0;

  ~FreeBuffers();
};
extern FreeBuffers free_buffers;

// Ends the process for want of memory.
[[noreturn]] void out_of_memory();

// A buffer from the heap.
[[gnu::cold, gnu::noinline]] char* allocate_digits();

// Returns a buffer of BUFFER_BYTES bytes, contents unspecified; without memory the process ends.
inline char* acquire_digits() {
  return free_buffers.count > 0 ? free_buffers.kept[--free_buffers.count] : allocate_digits();
}

// Takes the buffer back; null is allowed.
inline void release_digits(char* buffer) {
  if (buffer == nullptr) return;
  if (free_buffers.count < FreeBuffers::MAX_KEPT) [[likely]] {
    free_buffers.kept[free_buffers.count++] = buffer;
  } else {
    std::free(buffer);
  }
}

}  // namespace omrel
