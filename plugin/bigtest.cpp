// The command `bigtest`: a walk over the link to the host, one variable read and one written.
#include <cinttypes>
#include <cstdint>
#include <cstdio>

#include "plugin/host_link.h"

namespace omrel {
namespace {

int test_link(void* interp) {
  if (omrel_init(interp) != 0) return 1;
  const HostVar* pi = get_var(interp, "pi");
  if (pi != nullptr && pi->value != nullptr) {
    // The record's whole address, however wide this system's pointers are.
    std::printf("Pi is 0x%" PRIxPTR " '%s'\n", reinterpret_cast<std::uintptr_t>(pi), pi->value);
  } else {
    std::printf("failed to retrieve test var pi\n");
  }
  std::printf("Setting var dllvar to 123\n");
  std::printf("result was %i\n", set_var(interp, "dllvar", "123"));
  return 0;
}

}  // namespace
}  // namespace omrel

int quarnCommandBigTest(void* interp, int /*argc*/, const char* const* /*argv*/,
                        void* /*private_data*/) {
  try {
    return omrel::test_link(interp);
  } catch (...) {
    return 1;  // a callback of the host threw; nothing of ours is held
  }
}
