#include "bignum/buffers.h"

#include "support/console.h"

namespace omrel {

FreeBuffers free_buffers;

FreeBuffers::~FreeBuffers() {
  while (count > 0) std::free(kept[--count]);
}

void out_of_memory() { fatal_exit("Exception: Out of memory in bignum()", 0); }

char* allocate_digits() {
  char* buffer = static_cast<char*>(std::malloc(BUFFER_BYTES));
  if (buffer == nullptr) out_of_memory();
  return buffer;
}

}  // namespace omrel
