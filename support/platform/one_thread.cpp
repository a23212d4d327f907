// What the C++ runtime of MinGW-w64 asks of POSIX threads, for a library in which one thread at a
// time is running. The system's emulation keeps memory and handles for each library that uses it
// and leaves them behind when that is unloaded; this keeps nothing but the values of keys, and
// gives them back.
//
// State: the keys.
#include <pthread.h>

#include <cerrno>
#include <iterator>
#include <utility>

namespace {

struct Keys {
  ~Keys() {
    for (Key& key : all) {
      void* value = std::exchange(key.value, nullptr);
      if (value != nullptr && key.destructor != nullptr) key.destructor(value);
    }
  }

  struct Key {
    void* value;
    void (*destructor)(void*);
  };
  Key all[8] = {};  // the runtime takes one or two
  pthread_key_t count = 0;
};

// Made before anything that asks for a key, so that it is the last to go.
__attribute__((init_priority(101))) Keys keys;

}  // namespace

extern "C" {

int pthread_once(pthread_once_t* control, void (*routine)()) {
  if (*control != PTHREAD_ONCE_INIT) return 0;
  *control = !PTHREAD_ONCE_INIT;
  routine();
  return 0;
}

int pthread_mutex_init(pthread_mutex_t*, const pthread_mutexattr_t*) { return 0; }
int pthread_mutex_destroy(pthread_mutex_t*) { return 0; }
int pthread_mutex_lock(pthread_mutex_t*) { return 0; }
int pthread_mutex_unlock(pthread_mutex_t*) { return 0; }
int pthread_cond_broadcast(pthread_cond_t*) { return 0; }
int pthread_cond_wait(pthread_cond_t*, pthread_mutex_t*) { return 0; }

int pthread_key_create(pthread_key_t* key, void (*destructor)(void*)) {
  if (keys.count == std::size(keys.all)) return EAGAIN;
  keys.all[keys.count].destructor = destructor;
  *key = keys.count++;
  return 0;
}
int pthread_key_delete(pthread_key_t key) {
  keys.all[key].value = nullptr;
  return 0;
}
void* pthread_getspecific(pthread_key_t key) { return keys.all[key].value; }
int pthread_setspecific(pthread_key_t key, const void* value) {
  keys.all[key].value = const_cast<void*>(value);
  return 0;
}

}  // extern "C"
