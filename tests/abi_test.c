/* The plug-in as a host written in C meets it: loaded by path, functions found by name.
 *
 *   abi_test          checks it
 *   abi_test replay   makes the calls on standard input, a line each; every name is a variable that
 *                     holds its name. Prints what the calls do: their output, callbacks, code.
 *   abi_test ACT      a call with an effect on the process; the checks run it in one of its own
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
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
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

/* What systems have each their own way of. A line's end of standard output is the C library's:
 * text mode, which a host may turn off, makes two characters of it on Windows. */
#ifdef _WIN32
#define EOL "\r\n"
#define PIPE_MODE "rb"
static void* load(void) { return (void*)LoadLibraryA(OMREL_LIBRARY); }
static int unload(void* library) {
  return FreeLibrary((HMODULE)library) != 0 && GetModuleHandleA(OMREL_LIBRARY) == NULL;
}
typedef FARPROC Symbol;
static Symbol symbol_of(void* library, const char* name) {
  return GetProcAddress((HMODULE)library, name);
}
static int status_of(int closed) { return closed; }
static size_t held(void) {
  _HEAPINFO block = {0};
  DWORD handles = 0;
  size_t bytes = 0;
  while (_heapwalk(&block) == _HEAPOK) bytes += block._useflag == _USEDENTRY ? block._size : 0;
  GetProcessHandleCount(GetCurrentProcess(), &handles);
  return bytes + handles;
}
#else
#define EOL "\n"
#define PIPE_MODE "r"
static void* load(void) { return dlopen(OMREL_LIBRARY, RTLD_NOW | RTLD_LOCAL); }
static int unload(void* library) {
  return dlclose(library) == 0 && dlopen(OMREL_LIBRARY, RTLD_NOW | RTLD_NOLOAD) == NULL;
}
typedef void* Symbol;
static Symbol symbol_of(void* library, const char* name) { return dlsym(library, name); }
static int status_of(int closed) { return WIFEXITED(closed) ? WEXITSTATUS(closed) : -1; }
static size_t held(void) { return mallinfo2().uordblks; }
#endif

/* ISO C has no conversion from an object pointer to a function pointer; systems promise one. */
static void find(void* library, const char* name, void* function) {
  const Symbol symbol = symbol_of(library, name);
  check(symbol != NULL, name);
  if (symbol == NULL) exit(1);
  memcpy(function, &symbol, sizeof symbol);
}

/* The host: variables, the commands but for one, the result; with `echo` set, prints what it gets.
 */
static struct HostVar variable;
static const char* missing = "";
static char result[8000];
static int echo = 0;

static struct HostVar* get_var(void* interp, const char* name, int minus_one) {
  if (echo) printf("getVar %s %d\n", name, minus_one);
  free(variable.value);
  variable.value = strdup(name);
  return interp == NULL && minus_one == -1 ? &variable : NULL;
}
static int set_var(void* interp, const char* name, const char* value, int minus_one) {
  (void)interp;
  if (echo) printf("setVar %s %s %d\n", name, value, minus_one);
  snprintf(result, sizeof result, "%s", value);
  return 0;
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
  (void)interp;
  return strcmp(name, missing) == 0 ? NULL : (struct HostCommand*)&variable;
}
static void set_result(void* interp, const char* text, int zero) {
  if (interp == NULL && zero == 0) snprintf(result, sizeof result, "%s", text);
  if (echo) printf("setResult %s %d\n", text, zero);
}

static OmrelCommand big, bigtest;

static void* load_and_link(void) {
  void* library = load();
  if (library == NULL) {
    fprintf(stderr, "%s cannot be loaded\n", OMREL_LIBRARY);
    exit(1);
  }
  int (*hand_over)(OmrelGetVar, OmrelSetVar, OmrelSetVarValue, OmrelFreeVarValue, OmrelUnused,
                   OmrelUnused, OmrelGetCommand, OmrelUnused, OmrelUnused, OmrelSetResult,
                   OmrelUnused, OmrelFreeValue, OmrelUnused, OmrelUnused, OmrelUnused, OmrelUnused,
                   OmrelUnused);
  find(library, "_export_common_routines", &hand_over);
  find(library, "quarnCommandBigNum", &big);
  find(library, "quarnCommandBigTest", &bigtest);
  check(hand_over(get_var, set_var, set_var_value, free_var_value, NULL, NULL, get_command, NULL,
                  NULL, set_result, NULL, free_value, NULL, NULL, NULL, NULL, NULL) == 7,
        "callbacks counted");
  return library;
}

/* Calls a command with the words of the text, which is cut up. */
static int call(OmrelCommand command, char* text) {
  const char* argv[32] = {"big"};
  int argc = 1;
  for (char* word = strtok(text, " \r\n"); word != NULL && argc < 31;
       word = strtok(NULL, " \r\n")) {
    argv[argc++] = word;
  }
  return command(NULL, argc, argv, NULL);
}

static int replay(void) {
  static char line[30000];
  echo = 1;
#ifdef _WIN32
  _setmode(_fileno(stdout), _O_BINARY);
#endif
  while (fgets(line, sizeof line, stdin) != NULL) {
    const int code = call(big, line);
    printf("%d %s\n", code, variable.value == NULL ? "" : variable.value);
  }
  return 0;
}

static int act(const char* name) {
  char graph[] = "graph a12", end[] = "pow2 21590", guard[] = "fdiv 5 0";
  missing = strcmp(name, "report") == 0 ? "subst" : "";
  if (*missing != '\0') return bigtest(NULL, 1, (const char* const[]){"bigtest", NULL}, NULL);
  return call(big, strcmp(name, "graph") == 0 ? graph : strcmp(name, "end") == 0 ? end : guard);
}

/* Reads all that the file has, with the source line's number in it replaced by '#'. */
static const char* read_all(FILE* file) {
  static char output[512];
  output[fread(output, 1, sizeof output - 1, file)] = '\0';
  char* mark = strstr(output, "line ");
  char* digits = mark == NULL ? output : mark + strlen("line ");
  const size_t count = mark == NULL ? 0 : strspn(digits, "0123456789");
  if (count > 0) memmove(digits + 1, digits + count, strlen(digits + count) + 1);
  if (count > 0) *digits = '#';
  return output;
}

/* What an act leaves on a pipe: plain bytes, in their order, and a status. */
static void check_pipe(const char* program) {
  static const struct {
    const char *act, *output;
    int status;
  } CASES[] = {
      {"report", "\r" EOL "Exception in [omrel_init: subst not linked" EOL "] at line #" EOL, 1},
      {"graph", "a\xFE\xFE\r" EOL, 0},
      {"guard",
       "Error: big number division by zero" EOL
       "lib omrel_bignum: Unhandled exception near line #\n",
       1},
      {"end",
       "ERROR Overflow in big number > 6500 digits" EOL "Fatal error in big number constructor", 0},
  };
  for (size_t i = 0; i < sizeof CASES / sizeof *CASES; ++i) {
    char command[1000];
    snprintf(command, sizeof command, "\"%s\" %s", program, CASES[i].act);
    FILE* pipe = popen(command, PIPE_MODE);  // NOLINT(cert-env33-c): this program itself
    const char* output = pipe == NULL ? "no pipe" : read_all(pipe);
    check(strcmp(output, CASES[i].output) == 0, output);
    check(pipe != NULL && status_of(pclose(pipe)) == CASES[i].status, CASES[i].act);
  }
}

#ifdef _WIN32

/* Text and colours as the console's own buffer has them, where standard output is a console. */
static void check_colours(void) {
  static const struct {
    const char *act, *text;
    WORD colours[3];
    SHORT rows;
  } CASES[] = {{"graph", "a", {7, 4, 12}, 1}, {"report", "Exception in [omrel_", {12, 12, 12}, 2}};
  const HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
  CONSOLE_SCREEN_BUFFER_INFO info;
  if (!GetConsoleScreenBufferInfo(console, &info)) {
    fprintf(stderr, "no console here: colours are not checked\n");
    return;
  }
  for (size_t i = 0; i < sizeof CASES / sizeof *CASES; ++i) {
    void* library = load_and_link();
    act(CASES[i].act);
    fflush(stdout);
    check(GetConsoleScreenBufferInfo(console, &info) && info.wAttributes == 7, "colour left");
    const COORD at = {0, (SHORT)(info.dwCursorPosition.Y - CASES[i].rows)};
    WORD colours[3] = {0};
    char text[80] = "";
    DWORD got;
    ReadConsoleOutputAttribute(console, colours, 3, at, &got);
    ReadConsoleOutputCharacterA(console, text, (DWORD)strlen(CASES[i].text), at, &got);
    check(strcmp(text, CASES[i].text) == 0, CASES[i].text);
    check(memcmp(colours, CASES[i].colours, sizeof colours) == 0, "colours");
    check(unload(library), "unload");
  }
}

/* A process without a console can make one, but only once. */
static void check_no_console(void) {
  void* library = load_and_link();
  FreeConsole();
  call(big, (char[]){"+ 1 2"});
  call(big, (char[]){"+ 1"});
  check(AllocConsole() != 0, "a console that nobody asked for");
  check(unload(library), "unload");
}

#else

/* What an act writes to a terminal; NULL where there is none, as in a bare chroot. */
static const char* on_terminal(const char* name) {
  int master, slave;
  if (openpty(&master, &slave, NULL, NULL, NULL) != 0) return NULL;
  fflush(stdout);
  if (fork() == 0) {
    dup2(slave, STDOUT_FILENO);
    act(name);
    fflush(stdout);
    _exit(0);
  }
  wait(NULL);
  close(slave);
  FILE* terminal = fdopen(master, "r");
  const char* output = read_all(terminal);
  fclose(terminal);
  return output;
}

static void check_colours(void) {
  static const struct {
    const char *act, *locale, *output;
  } CASES[] = {
      {"report", "C",
       "\033[0;91m\r\r\nException in [omrel_init: subst not linked\r\n] at line #\033[0m\r\n"},
      {"graph", "C.UTF-8", "\033[0ma\033[0;31m\u25a0\033[0;91m\u25a0\033[0m\r\r\n"},
      {"graph", "C", "\033[0ma\033[0;31m\xfe\033[0;91m\xfe\033[0m\r\r\n"},
  };
  for (size_t i = 0; i < sizeof CASES / sizeof *CASES; ++i) {
    void* library = load_and_link();
    setenv("LC_ALL", CASES[i].locale, 1);
    const char* output = on_terminal(CASES[i].act);
    if (output == NULL) fprintf(stderr, "no terminal here: colours are not checked\n");
    check(output == NULL || strcmp(output, CASES[i].output) == 0, output);
    check(unload(library), "unload");
  }
}

static void check_no_console(void) {}

#endif

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
  check(version() == 119, "version");
  check(count() == 2, "count");
  check(strcmp(date(), "20191206") == 0, "date");
  check(strcmp(comment(), "Omrel Tcl Big Number Math Plugin") == 0, "comment");
  check(strcmp(commands()[0], "big") == 0 && strcmp(commands()[1], "bigtest") == 0, "commands");
  check(strcmp(functions()[0], "quarnCommandBigNum") == 0 &&
            strcmp(functions()[1], "quarnCommandBigTest") == 0,
        "functions");
}

/* Loaded, used and unloaded again and again, the library leaves nothing behind. */
static void check_unloading(void) {
  size_t before = 0;
  for (int i = 0; i < 20; ++i) {
    void* library = load_and_link();
    call(big, (char[]){"fact 300"});
    call(big, (char[]){"+= 12 5"});
    free(variable.value);
    variable.value = NULL;
    check(unload(library), "unload");
    if (i == 9) before = held(); /* by then an allocator has what it keeps for reuse */
  }
  check(held() == before, "nothing left behind");
}

int main(int argc, char** argv) {
  void* library = load_and_link();
  if (argc > 1) {
    const int code = strcmp(argv[1], "replay") == 0 ? replay() : act(argv[1]);
    fflush(stdout);
    return code;
  }
  check_description(library);
  check(call(big, (char[]){"+ 5 -3"}) == 0 && strcmp(result, "2") == 0, "big + 5 -3");
  check(bigtest(NULL, 1, (const char* const[]){"bigtest", NULL}, NULL) == 0 &&
            strcmp(result, "123") == 0,
        "bigtest");
  check(unload(library), "unload");
  check_unloading();
  check_colours();
  check_no_console();
  check_pipe(argv[0]);
  return failures == 0 ? 0 : 1;
}
