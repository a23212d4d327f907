// One call of `big`, and what the operator words share: operands, counts, hand-over.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "bignum/text_form.h"

namespace omrel {

// The arguments of one call. texts[0] is the command's name as invoked, texts[1] the operator
// word; a null text counts as empty.
struct Call {
  void* interp;
  int count;
  const char* const* texts;

  const char* text(int i) const { return i < count && texts[i] != nullptr ? texts[i] : ""; }
  const char* name() const { return text(0); }
  const char* word() const { return text(1); }
};

// An answer's text, of any form in bignum/text_form.h, for as long as the host needs it. Up to 300
// characters take no heap.
class AnswerText {
 public:
  template <class Form>
  explicit AnswerText(const Form& form) {
    if (form.room() > sizeof stack_text) {
      text = heap_text(form);
    } else {
      form.write(stack_text);
    }
  }
  ~AnswerText() {
    if (text != stack_text) std::free(text);
  }
  AnswerText(const AnswerText&) = delete;
  void operator=(const AnswerText&) = delete;

  // The text; null when there was no memory for it.
  const char* get() const { return text; }

 private:
  char stack_text[320];
  char* text = stack_text;
};

// The i-th text, which the call has, as a number; see bignum's constructor from text. Marks the
// line of the caller, so a word that begins with an operand need not.
bignum operand(const Call& call, int i, std::int32_t line = __builtin_LINE());

// Reads a count as 32 bits wide atol does: white space, one sign, digits; the value wraps.
std::int32_t parse_count(const char* text);

// The optional fifth text of "&", "|", "<<", ">>", "&=" and "|=": a width in bits; 0 when the call
// gives none or one below 1.
std::int32_t width_of(const Call& call);

// Reports an error of the script's on the console, naming the command and the line of the caller
// (or the one given, which is its caller's), and returns 1.
int refuse(const Call& call, const char* message, std::int32_t line = __builtin_LINE());

// Makes the answer the command's result and returns 0. Without memory for its text, the fallback
// is the result and the code is returned.
int hand_over(const Call& call, const AnswerText& answer, const char* fallback, int fallback_code);

// The same for a value in decimal. The two-operand words fall back to "0", an error.
int hand_over(const Call& call, const bignum& answer, const char* fallback = "0",
              int fallback_code = 1);

// Makes "1" or "0" the result and returns 0.
int hand_over_truth(const Call& call, bool truth);

}  // namespace omrel
