// One call of `big`, and what the operator words share: operands, counts, hand-over.
#pragma once

#include <cstdint>

#include "bignum/bignum.h"
#include "support/text.h"

namespace omrel {

// The arguments of one call. texts[0] is the command's name as invoked, texts[1] the operator
// word; a null text counts as empty.
struct Call {
  void* interp;
  int count;
  const char* const* texts;

  const char* text(int i) const;
  const char* name() const { return text(0); }
  const char* word() const { return text(1); }
};

// Room for an answer that takes no heap.
constexpr int SHORT_TEXT = 320;

// An answer's text for as long as the host needs it; a short one takes no heap.
class AnswerText {
 public:
  explicit AnswerText(const bignum& answer);

  // The text; null when there was no memory for it.
  const char* get() const { return text; }

 private:
  char short_text[SHORT_TEXT];
  HeapText owned;
  const char* text;
};

// The i-th text, which the call has, as a number; see bignum's constructor from text.
bignum number(const Call& call, int i);

// Reads a count as 32 bits wide atol does: white space, one sign, digits; the value wraps.
std::int32_t count_of(const char* text);

// Makes the answer the command's result and returns 0. Without memory for its text, the fallback
// is the result and the code is returned.
int hand_over(const Call& call, const bignum& answer, const char* fallback, int fallback_code);

// Hands over with the fallback of the two-operand words: "0", an error.
int hand_over(const Call& call, const bignum& answer);

// Makes "1" or "0" the result and returns 0.
int hand_over_truth(const Call& call, bool truth);

}  // namespace omrel
