#include "bench/gmp_commands.h"

#include <gmp.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace omrel::bench {
namespace {

constexpr unsigned long BILLION = 1'000'000'000;
constexpr std::size_t PLACES = 18;

// Times 10^18, in two steps where a long has 32 bits.
void scale(mpz_ptr z) {
  constexpr bool WIDE = sizeof(unsigned long) == 8;
  mpz_mul_ui(z, z, WIDE ? BILLION * BILLION : BILLION);
  if (!WIDE) mpz_mul_ui(z, z, BILLION);
}

// An integer of one call.
struct Integer {
  Integer() { mpz_init(z); }
  explicit Integer(const char* text, int base = 10) {
    mpz_init(z);
    mpz_set_str(z, text, base);
  }
  ~Integer() { mpz_clear(z); }
  Integer(const Integer&) = delete;
  Integer& operator=(const Integer&) = delete;
  mpz_t z;
};

// A number of magnitude zero may have a sign: "-0" is less than "0".
bool is_negative(const char* text) { return *text == '-'; }

void set_truth(GmpHost& host, bool truth) { host.set_result(truth ? "1" : "0"); }

void hand_over(GmpHost& host, const Integer& answer, bool zero_is_negative = false) {
  if (zero_is_negative && mpz_sgn(answer.z) == 0) {
    host.set_result("-0");
    return;
  }
  char* text = mpz_get_str(nullptr, 10, answer.z);
  host.set_result(text);
  std::free(text);
}

using Binary = void (*)(mpz_ptr, mpz_srcptr, mpz_srcptr);

template <Binary OPERATION>
void binary(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  Integer r;
  OPERATION(r.z, a.z, b.z);
  hand_over(host, r);
}

void multiply(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  Integer r;
  mpz_mul(r.z, a.z, b.z);
  hand_over(host, r, is_negative(argv[2]) != is_negative(argv[3]));
}

void divide(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  Integer r;
  mpz_tdiv_q(r.z, a.z, b.z);
  hand_over(host, r, is_negative(argv[2]) && mpz_cmp_ui(b.z, 1) == 0 && mpz_sgn(a.z) == 0);
}

void remainder(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  Integer r;
  mpz_tdiv_r(r.z, a.z, b.z);
  hand_over(host, r, is_negative(argv[2]));
}

// Of two negative numbers, the one nearer to zero is left over with its sign.
void left_over(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  const bool is_left = is_negative(argv[2]) && is_negative(argv[3]) && mpz_cmp(a.z, b.z) > 0;
  Integer r;
  mpz_tdiv_r(r.z, a.z, b.z);
  if (!is_left) mpz_abs(r.z, r.z);
  hand_over(host, r, is_left);
}

int compare(const Integer& a, const Integer& b, const char* const* argv) {
  const int order = mpz_cmp(a.z, b.z);
  return order != 0 ? order : int{is_negative(argv[3])} - int{is_negative(argv[2])};
}

using Relation = bool (*)(int);

template <Relation HOLDS>
void relation(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  set_truth(host, HOLDS(compare(a, b, argv)));
}

bool is_equal(int order) { return order == 0; }
bool is_unequal(int order) { return order != 0; }
bool is_less(int order) { return order < 0; }
bool is_greater(int order) { return order > 0; }
bool is_at_most(int order) { return order <= 0; }
bool is_at_least(int order) { return order >= 0; }

template <Relation HOLDS>
void selected(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  const bool first = HOLDS(compare(a, b, argv));
  hand_over(host, first ? a : b, is_negative(argv[first ? 2 : 3]));
}

bool is_true(const char* text) {
  const Integer a(text);
  return mpz_sgn(a.z) != 0 || is_negative(text);
}

void both(GmpHost& host, int, const char* const* argv) {
  set_truth(host, is_true(argv[2]) && is_true(argv[3]));
}

void either(GmpHost& host, int, const char* const* argv) {
  set_truth(host, is_true(argv[2]) || is_true(argv[3]));
}

void negated(GmpHost& host, int, const char* const* argv) { set_truth(host, !is_true(argv[2])); }

void is_even(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  set_truth(host, mpz_even_p(a.z) != 0);
}

// The text of a quotient's magnitude scaled by 10^18, with a sign and a decimal point.
class FixedText {
 public:
  FixedText(Integer& scaled, bool negative) {
    mpz_abs(scaled.z, scaled.z);
    room_ = static_cast<char*>(std::malloc(mpz_sizeinbase(scaled.z, 10) + 2 * PLACES + 5));
    std::memset(room_, '0', PLACES + 2);
    text_ = room_ + PLACES + 2;
    mpz_get_str(text_, 10, scaled.z);
    const std::size_t length = std::strlen(text_);
    if (length <= PLACES) text_ -= PLACES + 1 - length;
    end_ = text_ + std::strlen(text_) + 1;
    char* point = end_ - PLACES - 1;
    std::memmove(point + 1, point, PLACES + 1);
    *point = '.';
    if (negative) *--text_ = '-';
  }
  ~FixedText() { std::free(room_); }
  FixedText(const FixedText&) = delete;
  FixedText& operator=(const FixedText&) = delete;

  const char* get() const { return text_; }

  bool ends_in_zeros() const {
    return std::all_of(end_ - PLACES, end_, [](char c) { return c == '0'; });
  }

  // What follows behind the 18 places: 18 more, unless the division by the positive number leaves
  // nothing.
  void append_places(Integer& a, const Integer& b) {
    mpz_abs(a.z, a.z);
    mpz_tdiv_r(a.z, a.z, b.z);
    if (mpz_sgn(a.z) == 0) return;
    scale(a.z);
    mpz_tdiv_q(a.z, a.z, b.z);
    char* places = mpz_get_str(nullptr, 10, a.z);
    const std::size_t length = std::strlen(places);
    std::memset(end_, '0', PLACES);
    std::memcpy(end_ + PLACES - length, places, length + 1);
    std::free(places);
  }

 private:
  char* room_;
  char* text_;
  char* end_;  // where the terminating null is
};

void fixed_divide(GmpHost& host, int, const char* const* argv) {
  Integer a(argv[2]);
  const Integer b(argv[3]);
  scale(a.z);
  Integer q;
  mpz_tdiv_q(q.z, a.z, b.z);
  FixedText text(q, is_negative(argv[2]) != is_negative(argv[3]));
  if (text.ends_in_zeros() && mpz_sgn(b.z) > 0) text.append_places(a, b);
  host.set_result(text.get());
}

void mean(GmpHost& host, int argc, const char* const* argv) {
  Integer sum;
  for (int i = 2; i < argc; ++i) {
    const Integer value(argv[i]);
    mpz_add(sum.z, sum.z, value.z);
  }
  const bool negative = mpz_sgn(sum.z) < 0;
  scale(sum.z);
  mpz_tdiv_q_ui(sum.z, sum.z, static_cast<unsigned long>(argc - 2));
  host.set_result(FixedText(sum, negative).get());
}

long count_of(const char* text) { return std::strtol(text, nullptr, 10); }

// A count below 0 leaves the base.
void power(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const long n = count_of(argv[3]);
  Integer r;
  mpz_pow_ui(r.z, a.z, n < 0 ? 1 : static_cast<unsigned long>(n));
  hand_over(host, r, is_negative(argv[2]) && (n < 0 || n % 2 != 0));
}

using OfCount = void (*)(mpz_ptr, unsigned long);

void power_of_two(mpz_ptr r, unsigned long n) { mpz_setbit(r, n); }

// A count below 0 is as LEAST.
template <OfCount OPERATION, long LEAST>
void of_count(GmpHost& host, int, const char* const* argv) {
  Integer r;
  const long n = count_of(argv[2]);
  OPERATION(r.z, static_cast<unsigned long>(n < 0 ? LEAST : n));
  hand_over(host, r);
}

// The lowest bits of a number, where the call gives a width; all of them for a negative number.
void narrow(Integer& a, bool negative, int argc, const char* const* argv) {
  const long width = argc > 4 ? count_of(argv[4]) : 0;
  if (width < 1) return;
  const auto bits = static_cast<unsigned long>(width);
  if (negative) mpz_set_si(a.z, -1);
  mpz_fdiv_r_2exp(a.z, a.z, bits);
}

// A negative number has no bits, and the answer is the other one.
template <Binary OPERATION>
void bitwise(GmpHost& host, int argc, const char* const* argv) {
  Integer a(argv[2]);
  Integer b(argv[3]);
  narrow(a, is_negative(argv[2]), argc, argv);
  narrow(b, is_negative(argv[3]), argc, argv);
  const bool narrowed = argc > 4 && count_of(argv[4]) > 0;
  const bool a_has_none = is_negative(argv[2]) && !narrowed;
  const bool b_has_none = is_negative(argv[3]) && !narrowed;
  Integer r;
  if (!a_has_none && !b_has_none) {
    OPERATION(r.z, a.z, b.z);
  } else if (!a_has_none || !b_has_none) {
    mpz_swap(r.z, a_has_none ? b.z : a.z);
  }
  hand_over(host, r);
}

void exclusive(GmpHost& host, int, const char* const* argv) { bitwise<mpz_xor>(host, 4, argv); }

using WithCount = void (*)(mpz_ptr, mpz_srcptr, unsigned long);

// A shift by 1 or more loses the sign.
template <WithCount OPERATION>
void shift(GmpHost& host, int argc, const char* const* argv) {
  Integer a(argv[2]);
  const long n = count_of(argv[3]);
  const bool negative = n < 1 && is_negative(argv[2]);
  if (n > 0) mpz_abs(a.z, a.z);
  Integer r;
  OPERATION(r.z, a.z, static_cast<unsigned long>(n > 0 ? n : 0));
  narrow(r, negative, argc, argv);
  hand_over(host, r, negative);
}

template <WithCount OPERATION, unsigned long COUNT>
void by_constant(GmpHost& host, int, const char* const* argv) {
  Integer a(argv[2]);
  OPERATION(a.z, a.z, COUNT);
  hand_over(host, a);
}

void halve(GmpHost& host, int, const char* const* argv) {
  Integer a(argv[2]);
  mpz_abs(a.z, a.z);
  Integer r;
  mpz_tdiv_q_2exp(r.z, a.z, 1);
  hand_over(host, r);
}

void drop_digit(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  Integer r;
  mpz_tdiv_q_ui(r.z, a.z, 10);
  hand_over(host, r, is_negative(argv[2]));
}

void magnitude(GmpHost& host, int, const char* const* argv) {
  Integer a(argv[2]);
  mpz_abs(a.z, a.z);
  hand_over(host, a);
}

void square_root(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  Integer r;
  mpz_sqrt(r.z, a.z);
  hand_over(host, r);
}

void to_binary(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  char* text = static_cast<char*>(std::malloc(mpz_sizeinbase(a.z, 2) + 4));
  text[0] = '0';
  text[1] = 'b';
  mpz_get_str(text + 2, 2, a.z);
  host.set_result(text);
  std::free(text);
}

void from_binary(GmpHost& host, int, const char* const* argv) {
  hand_over(host, Integer(argv[2], 2));
}

void complement(GmpHost& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  Integer r;
  if (!is_negative(argv[2])) {
    mpz_setbit(r.z, mpz_sizeinbase(a.z, 2));
    mpz_sub_ui(r.z, r.z, 1);
    mpz_sub(r.z, r.z, a.z);
  }
  hand_over(host, r);
}

// A command on the variable's value, whose answer the variable takes.
template <GmpCommand COMMAND>
void update(GmpHost& host, int argc, const char* const* argv) {
  const char* const texts[] = {argv[0], argv[1], host.variable_text(), argc > 3 ? argv[3] : "",
                               argc > 4 ? argv[4] : ""};
  COMMAND(host, argc, texts);
  host.store_result();
}

}  // namespace

const std::map<std::string, GmpCommand>& gmp_commands() {
  static const std::map<std::string, GmpCommand> COMMANDS = {
      {"+", binary<mpz_add>},
      {"-", binary<mpz_sub>},
      {"*", multiply},
      {"/", divide},
      {"%", remainder},
      {"==", relation<is_equal>},
      {"!=", relation<is_unequal>},
      {"<", relation<is_less>},
      {">", relation<is_greater>},
      {"<=", relation<is_at_most>},
      {">=", relation<is_at_least>},
      {"&&", both},
      {"||", either},
      {"!", negated},
      {"is_even", is_even},
      {"max", selected<is_greater>},
      {"min", selected<is_less>},
      {"abs", magnitude},
      {"fdiv", fixed_divide},
      {"mean", mean},
      {"fmod", left_over},
      {"**", power},
      {"pow", power},
      {"pow2", of_count<power_of_two, 0>},
      {"fact", of_count<mpz_fac_ui, 0>},
      {"fib", of_count<mpz_fib_ui, 1>},
      {"sqrt", square_root},
      {"inttobin", to_binary},
      {"bintoint", from_binary},
      {"&", bitwise<mpz_and>},
      {"|", bitwise<mpz_ior>},
      {"^", exclusive},
      {"~", complement},
      {"<<", shift<mpz_mul_2exp>},
      {">>", shift<mpz_tdiv_q_2exp>},
      {"div2", halve},
      {"div10", drop_digit},
      {"++", update<by_constant<mpz_add_ui, 1>>},
      {"--", update<by_constant<mpz_sub_ui, 1>>},
      {"+=", update<binary<mpz_add>>},
      {"-=", update<binary<mpz_sub>>},
      {"*=", update<multiply>},
      {"/=", update<divide>},
      {"&=", update<bitwise<mpz_and>>},
      {"|=", update<bitwise<mpz_ior>>},
      {"^=", update<exclusive>},
  };
  return COMMANDS;
}

GmpCommand gmp_command(const std::string& word) {
  const auto found = gmp_commands().find(word);
  return found == gmp_commands().end() ? nullptr : found->second;
}

}  // namespace omrel::bench
