// Binary digits, and digits drawn as coloured blocks.
#include <cstdio>

#include "commands/operator_table.h"
#include "plugin/host_link.h"
#include "support/console.h"
#include "support/line_marker.h"

namespace omrel {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Whether the texts are equal without regard to the case of ASCII letters, whatever the locale.
bool equal_ignoring_case(const char* x, const char* y) {
  while (*x != '\0' && lower(*x) == lower(*y)) ++x, ++y;
  return lower(*x) == lower(*y);
}

// Console attributes of the digits 0 to 9; see the colours of the console.
constexpr std::uint16_t DIGIT_COLOUR[10] = {0, 4, 12, 6, 14, 10, 9, 13, 8, 15};

void draw(char c, bool has_colours, const char* block) {
  if (c >= '0' && c <= '9') {
    if (has_colours) console_set_colour(DIGIT_COLOUR[c - '0']);
    std::fputs(block, stdout);
  } else {
    if (has_colours) console_reset_colour();
    std::putchar(c);
  }
}

}  // namespace

int op_to_binary(const Call& call) {
  mark_line();
  if (*call.text(2) == '-') {
    std::printf("%s %s %s: Error -ve numbers not handled\r\n", call.name(), call.word(),
                call.text(2));
    return 1;
  }
  const bool is_prefixed = !equal_ignoring_case(call.text(3), "-noprefix");
  const bignum x = operand(call, 2);
  if (x.has_binary_form()) return hand_over(call, AnswerText(BinaryText(x, is_prefixed)), "", 0);
  set_result(call.interp, "");
  return 0;
}

int op_graph(const Call& call) {
  mark_line();
  const std::int32_t width = parse_count(call.text(3));
  // Asking the console for each of thousands of digits would take longer than drawing them.
  const bool has_colours = console_has_colours();
  const char* block = platform::block();
  std::int32_t column = 0;
  for (const char* c = call.text(2); *c != '\0'; ++c) {
    draw(*c, has_colours, block);
    if (++column == width) {
      std::printf("\r\n");
      column = 0;
    }
  }
  console_reset_colour();
  if (!equal_ignoring_case(call.text(3), "-nonewline")) std::printf("\r\n");
  return 0;
}

}  // namespace omrel
