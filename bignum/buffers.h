// Digit buffers: the memory behind every bignum, kept for reuse in a short list.
#pragma once

#include "bignum/bignum.h"

namespace omrel {

// What a digit buffer has beyond its 6,501 bytes, so that a kernel may work in whole words on the
// last digits of a text: a word that starts inside the text ends inside the buffer.
constexpr int BUFFER_SLACK = 67;
constexpr int BUFFER_BYTES = MAX_DIGITS + 1 + BUFFER_SLACK;

// Returns a buffer of BUFFER_BYTES bytes, contents unspecified; without memory the process ends.
char* acquire_digits();

// Ends the process for want of memory.
[[noreturn]] void out_of_memory();

// Takes the buffer back; null is allowed.
void release_digits(char* buffer);

}  // namespace omrel
