#include "commands/call.h"

#include "plugin/host_link.h"

namespace omrel {
namespace {

[[gnu::noinline]] int hand_over_long(const Call& call, const bignum& answer, const char* fallback,
                                     int fallback_code) {
  const HeapText text(answer.to_string());
  set_result(call.interp, text == nullptr ? fallback : text.get());
  return text == nullptr ? fallback_code : 0;
}

bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

}  // namespace

const char* Call::text(int i) const { return i < count && texts[i] != nullptr ? texts[i] : ""; }

bignum number(const Call& call, int i) { return bignum(call.texts[i], 0); }

std::int32_t count_of(const char* text) {
  while (is_space(*text)) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  std::uint32_t value = 0;  // modulo 2^32
  for (; *text >= '0' && *text <= '9'; ++text) {
    value = value * 10 + static_cast<std::uint32_t>(*text - '0');
  }
  return static_cast<std::int32_t>(negative ? 0 - value : value);
}

AnswerText::AnswerText(const bignum& answer) : text(short_text) {
  if (!answer.write_short_text(short_text, sizeof short_text)) {
    owned.reset(answer.to_string());
    text = owned.get();
  }
}

int hand_over(const Call& call, const bignum& answer, const char* fallback, int fallback_code) {
  char short_text[SHORT_TEXT];
  if (!answer.write_short_text(short_text, sizeof short_text)) {
    return hand_over_long(call, answer, fallback, fallback_code);
  }
  set_result(call.interp, short_text);
  return 0;
}

int hand_over(const Call& call, const bignum& answer) { return hand_over(call, answer, "0", 1); }

int hand_over_truth(const Call& call, bool truth) {
  set_result(call.interp, truth ? "1" : "0");
  return 0;
}

}  // namespace omrel
