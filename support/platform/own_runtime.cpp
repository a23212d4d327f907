// For a library that has its own copy of the C++ runtime. The runtime sets some memory aside for
// exceptions that find none, and leaves giving it back to the process's end; a host may load and
// unload the library as often as it likes, so it goes with the library.
#include <cstddef>

#ifdef __GLIBCXX__

namespace __gnu_cxx {
void __freeres();
}

namespace {

struct OwnRuntime {
  ~OwnRuntime() { __gnu_cxx::__freeres(); }
};
const OwnRuntime own_runtime;

}  // namespace

#endif
