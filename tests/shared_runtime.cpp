// Makes of abi_test.c a host in C++ that shares its runtime with others, as MinGW's compilers link
// one unless told otherwise: it throws and catches beside the library, before and after.
#include <cstdlib>
#include <stdexcept>

static void throw_and_catch() {
  try {
    throw std::runtime_error("the host's own");
  } catch (const std::exception&) {
    return;
  }
}
[[maybe_unused]] static const int registered = (throw_and_catch(), std::atexit(throw_and_catch));
