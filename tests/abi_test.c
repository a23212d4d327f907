/* The plug-in as a host written in C meets it: loaded by path, functions found by name.
 *
 *   abi_test          checks it
 *   abi_test replay   makes the calls on standard input, a line each; every name is a variable that
 *                     holds its name. Prints what the calls do: their output, callbacks, code.
 */
#define _DEFAULT_SOURCE
#include "plugin/omrel_plugin.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <malloc.h>
#include <windows.h>
#else
#include <dlfcn.h>
#include <malloc.h>
#endif

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures = 0;

static void check(int holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "failed: %s\n", what);
  ++failures;
}

/* No block that an allocator hands out counts for less. */
#define BLOCK 16

/* What systems have each their own way of. */
#ifdef _WIN32
#define SLIP 4
static void* load(void) { return (void*)LoadLibraryA(OMREL_LIBRARY); }
static int unload(void* library) {
  return FreeLibrary((HMODULE)library) != 0 && GetModuleHandleA(OMREL_LIBRARY) == NULL;
}
typedef FARPROC Symbol;
static Symbol symbol_of(void* library, const char* name) {
  return GetProcAddress((HMODULE)library, name);
}
/* Bytes, and handles as blocks: Wine counts none, but knows each. */
static size_t held(void) {
  _HEAPINFO block = {0};
  DWORD flags;
  size_t all = 0;
  while (_heapwalk(&block) == _HEAPOK) all += block._useflag == _USEDENTRY ? block._size : 0;
  for (ULONG_PTR handle = 4; handle < 4000; handle += 4) {
    all += GetHandleInformation((HANDLE)handle, &flags) != 0 ? BLOCK : 0;
  }
  return all;
}
/* From here on the process has another C++ runtime besides the library's own. */
static int bring_other_runtime(void) { return LoadLibraryA(UNWINDER) != NULL; }
#else
#define SLIP 0
static void* load(void) { return dlopen(OMREL_LIBRARY, RTLD_NOW | RTLD_LOCAL); }
static int unload(void* library) {
  return dlclose(library) == 0 && dlopen(OMREL_LIBRARY, RTLD_NOW | RTLD_NOLOAD) == NULL;
}
typedef void* Symbol;
static Symbol symbol_of(void* library, const char* name) { return dlsym(library, name); }
static size_t held(void) { return mallinfo2().uordblks; }
static int bring_other_runtime(void) { return 1; }
#endif

/* The host: variables, the commands, the result; with `echo` set, prints what it gets. */
static struct HostVar variable;
static char result[8000];
static int echo = 0;

static struct HostVar* get_var(void* interp, const char* name, int minus_one) {
  if (echo) printf("getVar %s %d\n", name, minus_one);
  free(variable.value);
  variable.value = strdup(name);
  return interp == NULL && minus_one == -1 ? &variable : NULL;
}
static int set_var(void* interp, const char* name, const char* value, int minus_one) {
  if (echo) printf("setVar %s %s %d\n", name, value, minus_one);
  snprintf(result, sizeof result, "%s", value);
  return interp != NULL;
}
static void set_var_value(struct HostVar* var, const char* value, int zero) {
  if (echo) printf("setVarValue %s %d\n", value, zero);
  var->value = strdup(value);
}
static void free_value(char* value) {
  if (echo) printf("freeValue\n");
  free(value);
  variable.value = NULL;
}
static void free_var_value(struct HostVar* var) { free_value(var->value); }
static struct HostCommand* get_command(void* interp, const char* name) {
  return interp == NULL && name != NULL ? (struct HostCommand*)&variable : NULL;
}
static void set_result(void* interp, const char* text, int zero) {
  if (interp == NULL && zero == 0) snprintf(result, sizeof result, "%s", text);
  if (echo) printf("setResult %s %d\n", text, zero);
}

static OmrelCommand big, bigtest;

/* A function of the library, whatever its type. */
static void find(void* library, const char* name, void* function) {
  const Symbol symbol = symbol_of(library, name);
  check(symbol != NULL, name);
  if (symbol == NULL) exit(1);
  memcpy(function, &symbol, sizeof symbol);
}

static void* load_and_link(void) {
  int (*hand_over)(OmrelGetVar, OmrelSetVar, OmrelSetVarValue, OmrelFreeVarValue, OmrelUnused,
                   OmrelUnused, OmrelGetCommand, OmrelUnused, OmrelUnused, OmrelSetResult,
                   OmrelUnused, OmrelFreeValue, OmrelUnused, OmrelUnused, OmrelUnused, OmrelUnused,
                   OmrelUnused);
  void* library = load();
  check(library != NULL, OMREL_LIBRARY);
  find(library, "_export_common_routines", &hand_over);
  find(library, "quarnCommandBigNum", &big);
  find(library, "quarnCommandBigTest", &bigtest);
  check(hand_over(get_var, set_var, set_var_value, free_var_value, NULL, NULL, get_command, NULL,
                  NULL, set_result, NULL, free_value, NULL, NULL, NULL, NULL, NULL) == 7,
        "callbacks counted");
  return library;
}

/* Calls big with the words of the text, which is cut up. */
static int call(char* text) {
  const char* argv[32] = {"big"};
  int argc = 1;
  for (char* word = strtok(text, " \r\n"); word != NULL && argc < 31;
       word = strtok(NULL, " \r\n")) {
    argv[argc++] = word;
  }
  return big(NULL, argc, argv, NULL);
}

static void replay(void) {
  static char line[30000];
  echo = 1;
#ifdef _WIN32
  _setmode(_fileno(stdout), _O_BINARY);
#endif
  while (fgets(line, sizeof line, stdin) != NULL) {
    const int code = call(line);
    printf("%d %s\n", code, variable.value == NULL ? "" : variable.value);
  }
}

static void check_description(void* library) {
  int (*version)(void), (*count)(void);
  const char* (*date)(void), *(*comment)(void);
  const char* const* (*commands)(void), * const* (*functions)(void);
  find(library, "_get_dll_version", &version);
  find(library, "_get_export_count", &count);
  find(library, "_get_dll_date", &date);
  find(library, "_get_dll_comment", &comment);
  find(library, "_get_command_list", &commands);
  find(library, "_get_function_list", &functions);
  check(version() == 119 && count() == 2, "version and count");
  check(strcmp(date(), "20191206") == 0, "date");
  check(strcmp(comment(), "Omrel Tcl Big Number Math Plugin") == 0, "comment");
  check(strcmp(commands()[0], "big") == 0 && strcmp(commands()[1], "bigtest") == 0, "commands");
  check(strcmp(functions()[0], "quarnCommandBigNum") == 0 &&
            strcmp(functions()[1], "quarnCommandBigTest") == 0,
        "functions");
  check(call((char[]){"+ 5 -3"}) == 0 && strcmp(result, "2") == 0, "big + 5 -3");
  check(bigtest(NULL, 1, (const char* const[]){"bigtest", NULL}, NULL) == 0 &&
            strcmp(result, "123") == 0,
        "bigtest");
}

#ifdef __i386__

/* Calls a command with the stack `slip` bytes off a boundary of 16, and stores how it finds ebx,
 * esi, the stack pointer's distance from edi, the direction flag and the x87 environment
 * afterwards; ebp it needs itself. */
int probe(OmrelCommand command, int argc, const char* const* argv, int slip,
          unsigned seen[11]) __asm__("probe");
#define STORE(from, at) "mov " from ", " #at "(%ecx)\n"
__asm__(".text\nprobe: push %ebp\nmov %esp, %ebp\npush %ebx\npush %esi\npush %edi\n"
        "and $-16, %esp\nsub 20(%ebp), %esp\n"
        "push $0\npush 16(%ebp)\npush 12(%ebp)\npush $0\n"
        "mov $0x1111, %ebx\nmov $0x2222, %esi\nmov %esp, %edi\ncall *8(%ebp)\n"
        "mov 24(%ebp), %ecx\n" STORE("%ebx", 0) STORE("%esi", 4) "sub %esp, %edi\n" STORE(
            "%edi", 8) "pushf\npop %edx\nand $0x400, %edx\n" STORE("%edx", 12)
            "fnstenv 16(%ecx)\nfldenv 16(%ecx)\n"
            "lea -12(%ebp), %esp\npop %edi\npop %esi\npop %ebx\npop %ebp\nret\n");

/* What a caller may count on, however it has set the floating-point units and, on Windows, where
 * no more than four bytes are promised, the stack. */
static void check_what_a_callee_keeps(void) {
  static const char* const CALLS[][4] = {{"big", "sqrt", "999999998000000002", NULL},
                                         {"big", "fdiv", "7", "-3"},
                                         {"big", "/", "1", "-0"},
                                         {"big", "**", "7", "900"}};
  static const unsigned short CONTROL_WORDS[] = {0x37F, 0x27F, 0x7F, 0xF7F};
  for (unsigned i = 0; i < 4 * 4; ++i) {
    const char* const* argv = CALLS[i % 4];
    const unsigned short wanted = CONTROL_WORDS[i / 4];
    const unsigned mxcsr_wanted = 0x1F80 | (i / 4) << 13;
    unsigned short control, usual;
    unsigned mxcsr, mxcsr_usual, seen[11];
    __asm__ volatile("fnstcw %0\nstmxcsr %1" : "=m"(usual), "=m"(mxcsr_usual));
    __asm__ volatile("fldcw %0\nldmxcsr %1" ::"m"(wanted), "m"(mxcsr_wanted));
    probe(big, argv[3] == NULL ? 3 : 4, argv, SLIP * (int)(i / 4), seen);
    __asm__ volatile("fnstcw %0\nstmxcsr %1" : "=m"(control), "=m"(mxcsr));
    __asm__ volatile("fldcw %0\nldmxcsr %1" ::"m"(usual), "m"(mxcsr_usual));
    check(seen[0] == 0x1111 && seen[1] == 0x2222 && seen[2] == 0, "registers kept");
    check(seen[3] == 0 && (seen[6] & 0xFFFF) == 0xFFFF, "direction flag clear, x87 stack empty");
    check(control == wanted && (mxcsr & ~0x3FU) == mxcsr_wanted, "control words kept");
    check(i % 4 != 0 || strcmp(result, "999999999") == 0, "a root in any rounding mode");
  }
}

#else
static void check_what_a_callee_keeps(void) {}
#endif

/* Loaded, used and unloaded again and again, the library leaves nothing behind. Its own failures
 * are its own to catch, whatever else the process has loaded. */
static void check_unloading(void) {
  size_t before = 0;
  for (int i = 0; i < 20; ++i) {
    void* library = load_and_link();
    call((char[]){"fact 300"});
    check(call((char[]){"fdiv 1 0"}) == 1 && strstr(result, "Unhandled exception") != NULL,
          "an engine failure");
    call((char[]){"+= 12 5"});
    free_value(variable.value);
    check(unload(library), "unload");
    if (i == 9) before = held(); /* by then an allocator has what it keeps for reuse */
  }
  /* A loader may take a block for itself at its 30th load, say, but none each time. */
  check(held() < before + 10 * BLOCK, "nothing left behind");
}

int main(int argc, char** argv) {
  void* library = load_and_link();
  if (argc > 1 && strcmp(argv[1], "replay") == 0) {
    replay();
    return 0;
  }
  check_description(library);
  check_what_a_callee_keeps();
  check(unload(library), "unload");
  check_unloading();
  check(bring_other_runtime(), "another C++ runtime");
  check_unloading();
  return failures == 0 ? 0 : 1;
}
