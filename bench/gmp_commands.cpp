#include "bench/gmp_commands.h"

#include <gmp.h>

#include <cstdlib>
#include <cstring>
#include <map>

namespace omrel::bench {
namespace {

constexpr unsigned long SCALE = 1'000'000'000'000'000'000;
constexpr std::size_t PLACES = 18;

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

void set_result(Host& host, const char* text) { host.result = text; }

void hand_over(Host& host, const Integer& answer, int base = 10) {
  char* text = mpz_get_str(nullptr, base, answer.z);
  set_result(host, text);
  std::free(text);
}

using Binary = void (*)(mpz_ptr, mpz_srcptr, mpz_srcptr);

template <Binary OPERATION>
void binary(Host& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  Integer r;
  OPERATION(r.z, a.z, b.z);
  hand_over(host, r);
}

template <Binary OPERATION>
void update(Host& host, int, const char* const* argv) {
  const Integer a(host.variable.c_str());
  const Integer b(argv[3]);
  Integer r;
  OPERATION(r.z, a.z, b.z);
  char* text = mpz_get_str(nullptr, 10, r.z);
  host.variable = text;
  set_result(host, text);
  std::free(text);
}

void equal(Host& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  set_result(host, mpz_cmp(a.z, b.z) == 0 ? "1" : "0");
}

void less(Host& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  set_result(host, mpz_cmp(a.z, b.z) < 0 ? "1" : "0");
}

void max(Host& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  const Integer b(argv[3]);
  hand_over(host, mpz_cmp(a.z, b.z) > 0 ? a : b);
}

// A quotient scaled by 10^18, as a text with a decimal point; not negative here.
void hand_over_fixed(Host& host, const Integer& scaled) {
  const std::size_t room = mpz_sizeinbase(scaled.z, 10) + PLACES + 4;
  char* text = static_cast<char*>(std::malloc(room));
  std::memset(text, '0', PLACES + 1);
  char* digits = text + PLACES + 1;
  mpz_get_str(digits, 10, scaled.z);
  const std::size_t length = std::strlen(digits);
  if (length <= PLACES) digits -= PLACES + 1 - length;
  char* point = digits + std::strlen(digits) - PLACES;
  std::memmove(point + 1, point, PLACES + 1);
  *point = '.';
  set_result(host, digits);
  std::free(text);
}

void fixed_divide(Host& host, int, const char* const* argv) {
  Integer a(argv[2]);
  const Integer b(argv[3]);
  mpz_mul_ui(a.z, a.z, SCALE);
  Integer q;
  mpz_tdiv_q(q.z, a.z, b.z);
  hand_over_fixed(host, q);
}

void mean(Host& host, int argc, const char* const* argv) {
  Integer sum;
  for (int i = 2; i < argc; ++i) {
    const Integer value(argv[i]);
    mpz_add(sum.z, sum.z, value.z);
  }
  mpz_mul_ui(sum.z, sum.z, SCALE);
  mpz_tdiv_q_ui(sum.z, sum.z, static_cast<unsigned long>(argc - 2));
  hand_over_fixed(host, sum);
}

void power(Host& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  Integer r;
  mpz_pow_ui(r.z, a.z, std::strtoul(argv[3], nullptr, 10));
  hand_over(host, r);
}

using OfCount = void (*)(mpz_ptr, unsigned long);

void power_of_two(mpz_ptr r, unsigned long n) { mpz_setbit(r, n); }

template <OfCount OPERATION>
void of_count(Host& host, int, const char* const* argv) {
  Integer r;
  OPERATION(r.z, std::strtoul(argv[2], nullptr, 10));
  hand_over(host, r);
}

using WithCount = void (*)(mpz_ptr, mpz_srcptr, unsigned long);

void divided(mpz_ptr r, mpz_srcptr a, unsigned long n) { mpz_tdiv_q_ui(r, a, n); }

template <WithCount OPERATION>
void shift(Host& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  Integer r;
  OPERATION(r.z, a.z, std::strtoul(argv[3], nullptr, 10));
  hand_over(host, r);
}

template <WithCount OPERATION, unsigned long COUNT>
void by_constant(Host& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  Integer r;
  OPERATION(r.z, a.z, COUNT);
  hand_over(host, r);
}

void square_root(Host& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  Integer r;
  mpz_sqrt(r.z, a.z);
  hand_over(host, r);
}

void to_binary(Host& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  char* text = static_cast<char*>(std::malloc(mpz_sizeinbase(a.z, 2) + 4));
  text[0] = '0';
  text[1] = 'b';
  mpz_get_str(text + 2, 2, a.z);
  set_result(host, text);
  std::free(text);
}

void from_binary(Host& host, int, const char* const* argv) { hand_over(host, Integer(argv[2], 2)); }

void complement(Host& host, int, const char* const* argv) {
  const Integer a(argv[2]);
  Integer r;
  mpz_setbit(r.z, mpz_sizeinbase(a.z, 2));
  mpz_sub_ui(r.z, r.z, 1);
  mpz_sub(r.z, r.z, a.z);
  hand_over(host, r);
}

void increment(Host& host, int, const char* const*) {
  Integer a(host.variable.c_str());
  mpz_add_ui(a.z, a.z, 1);
  char* text = mpz_get_str(nullptr, 10, a.z);
  host.variable = text;
  set_result(host, text);
  std::free(text);
}

}  // namespace

GmpCommand gmp_command(const std::string& word) {
  static const std::map<std::string, GmpCommand> COMMANDS = {
      {"+", binary<mpz_add>},
      {"-", binary<mpz_sub>},
      {"*", binary<mpz_mul>},
      {"/", binary<mpz_tdiv_q>},
      {"%", binary<mpz_tdiv_r>},
      {"==", equal},
      {"<", less},
      {"max", max},
      {"fdiv", fixed_divide},
      {"mean", mean},
      {"fmod", binary<mpz_tdiv_r>},
      {"**", power},
      {"pow2", of_count<power_of_two>},
      {"fact", of_count<mpz_fac_ui>},
      {"fib", of_count<mpz_fib_ui>},
      {"sqrt", square_root},
      {"inttobin", to_binary},
      {"bintoint", from_binary},
      {"&", binary<mpz_and>},
      {"|", binary<mpz_ior>},
      {"^", binary<mpz_xor>},
      {"~", complement},
      {"<<", shift<mpz_mul_2exp>},
      {">>", shift<mpz_tdiv_q_2exp>},
      {"div2", by_constant<mpz_tdiv_q_2exp, 1>},
      {"div10", by_constant<divided, 10>},
      {"++", increment},
      {"+=", update<mpz_add>},
      {"*=", update<mpz_mul>},
  };
  const auto found = COMMANDS.find(word);
  return found == COMMANDS.end() ? nullptr : found->second;
}

}  // namespace omrel::bench
