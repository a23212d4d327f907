// A stack of returned buffers, bounded, so that a run of calls allocates nothing. Most calls use
// three to five values; what is beyond the bound goes back to the heap at once, and the rest when
// the library is unloaded.
#include "bignum/buffers.h"

#include <cstdlib>

#include "support/console.h"

namespace omrel {
namespace {

constexpr int MAX_KEPT = 12;

struct FreeList {
  char* kept[MAX_KEPT];
  int count = 0;

  ~FreeList() {
    while (count > 0) std::free(kept[--count]);
  }
};

FreeList free_list;

}  // namespace

void out_of_memory() { fatal_exit("Exception: Out of memory in bignum()", 0); }

char* acquire_digits() {
  if (free_list.count > 0) return free_list.kept[--free_list.count];
  char* buffer = static_cast<char*>(std::malloc(BUFFER_BYTES));
  if (buffer == nullptr) out_of_memory();
  return buffer;
}

void release_digits(char* buffer) {
  if (free_list.count < MAX_KEPT && buffer != nullptr) {
    free_list.kept[free_list.count++] = buffer;
  } else {
    std::free(buffer);
  }
}

}  // namespace omrel
