#include "commands/call.h"

#include <algorithm>

#include "plugin/host_link.h"
#include "support/line_marker.h"

namespace omrel {

bignum operand(const Call& call, int i, std::int32_t line) {
  mark_line(line);
  return bignum(call.texts[i], 0);
}

std::int32_t parse_count(const char* text) {
  while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  std::uint32_t value = 0;  // modulo 2^32
  for (; *text >= '0' && *text <= '9'; ++text) {
    value = value * 10 + static_cast<std::uint32_t>(*text - '0');
  }
  return static_cast<std::int32_t>(negative ? 0 - value : value);
}

std::int32_t width_of(const Call& call) {
  return call.count < 5 ? 0 : std::max(parse_count(call.text(4)), 0);
}

int refuse(const Call& call, const char* message, std::int32_t line) {
  mark_line(line);
  return report_exception(call.name(), message);
}

int hand_over(const Call& call, const AnswerText& answer, const char* fallback, int fallback_code) {
  const bool is_made = answer.get() != nullptr;
  set_result(call.interp, is_made ? answer.get() : fallback);
  return is_made ? 0 : fallback_code;
}

int hand_over(const Call& call, const bignum& answer, const char* fallback, int fallback_code) {
  return hand_over(call, AnswerText(DecimalText(answer)), fallback, fallback_code);
}

int hand_over_truth(const Call& call, bool truth) {
  set_result(call.interp, truth ? "1" : "0");
  return 0;
}

}  // namespace omrel
