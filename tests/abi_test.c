/* The plug-in as a host written in C meets it: loaded by path, functions found by name. */
#define _DEFAULT_SOURCE
#include "plugin/omrel_plugin.h"

#include <dlfcn.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures = 0;

static void check(int holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "failed: %s\n", what);
  ++failures;
}

static void* library;

/* ISO C has no conversion from an object pointer to a function pointer; POSIX promises one. */
static void find(const char* name, void* function) {
  void* symbol = dlsym(library, name);
  check(symbol != NULL, name);
  if (symbol == NULL) exit(1);
  memcpy(function, &symbol, sizeof symbol);
}

static struct HostVar pi = {"3.14"};
static int has_subst = 1;
static char dllvar[16];
static char result[64];

static struct HostVar* get_var(void* interp, const char* name, int minus_one) {
  return interp == NULL && minus_one == -1 && strcmp(name, "pi") == 0 ? &pi : NULL;
}

static int set_var(void* interp, const char* name, const char* value, int minus_one) {
  if (interp != NULL || minus_one != -1 || strcmp(name, "dllvar") != 0) return 1;
  snprintf(dllvar, sizeof dllvar, "%s", value);
  return 0;
}

static struct HostCommand* get_command(void* interp, const char* name) {
  (void)interp;
  return strcmp(name, "subst") == 0 && !has_subst ? NULL : (struct HostCommand*)&pi;
}

static void set_result(void* interp, const char* text, int zero) {
  if (interp == NULL && zero == 0) snprintf(result, sizeof result, "%s", text);
}

static void check_description(void) {
  int (*version)(void), (*count)(void);
  const char* (*date)(void), *(*comment)(void);
  const char* const* (*commands)(void), * const* (*functions)(void);
  find("_get_dll_version", &version);
  find("_get_export_count", &count);
  find("_get_dll_date", &date);
  find("_get_dll_comment", &comment);
  find("_get_command_list", &commands);
  find("_get_function_list", &functions);
  check(version() == 119, "version");
  check(count() == 2, "count");
  check(strcmp(date(), "20191206") == 0, "date");
  check(strcmp(comment(), "Omrel Tcl Big Number Math Plugin") == 0, "comment");
  check(strcmp(commands()[0], "big") == 0 && strcmp(commands()[1], "bigtest") == 0, "commands");
  check(strcmp(functions()[0], "quarnCommandBigNum") == 0 &&
            strcmp(functions()[1], "quarnCommandBigTest") == 0,
        "functions");
}

/* Calls the command in a child process whose standard output is the given end, which is closed
 * here; returns what arrives at the other end. */
static const char* output_at(int other_end, int child_end, OmrelCommand command,
                             const char* const* argv) {
  static char output[256];
  const pid_t child = fork();
  if (child == 0) {
    int argc = 0;
    while (argv[argc] != NULL) ++argc;
    dup2(child_end, STDOUT_FILENO);
    const int code = command(NULL, argc, argv, NULL);
    fflush(stdout);
    _exit(code);
  }
  close(child_end);
  size_t length = 0;
  ssize_t got;
  while ((got = read(other_end, output + length, sizeof output - 1 - length)) > 0) {
    length += (size_t)got;
  }
  output[length] = '\0';
  close(other_end);
  waitpid(child, NULL, 0);
  return output;
}

/* What the command writes to a terminal. */
static const char* on_terminal(OmrelCommand command, const char* const* argv) {
  int master, slave;
  return openpty(&master, &slave, NULL, NULL, NULL) == 0 ? output_at(master, slave, command, argv)
                                                         : "no terminal";
}

/* A report in red: colour sequences on a terminal, in their places, and plain bytes on a pipe. */
static void check_colours(OmrelCommand bigtest, int has_terminal) {
  static const char ON_TERMINAL[] =
      "\033[0;91m\r\r\nException in [omrel_init: subst not linked\r\n] at line 0\033[0m\r\n";
  static const char ON_PIPE[] = "\r\nException in [omrel_init: subst not linked\n] at line 0\n";
  static const char* const argv[] = {"bigtest", NULL};
  int ends[2];
  has_subst = 0;
  check(pipe(ends) == 0 && strcmp(output_at(ends[0], ends[1], bigtest, argv), ON_PIPE) == 0,
        "plain report");
  check(!has_terminal || strcmp(on_terminal(bigtest, argv), ON_TERMINAL) == 0, "red report");
  has_subst = 1;
}

/* Digits on a terminal whose locale is the one named. */
static void check_graph(OmrelCommand big, const char* locale, const char* drawing) {
  static const char* const argv[] = {"big", "graph", "12", NULL};
  setenv("LC_ALL", locale, 1);
  check(strcmp(on_terminal(big, argv), drawing) == 0, locale);
}

/* A bare chroot has no pseudo-terminals; what needs one is left out there, and said. */
static int can_make_terminal(void) {
  int master, slave;
  if (openpty(&master, &slave, NULL, NULL, NULL) != 0) {
    fprintf(stderr, "no pseudo-terminal here: colours and blocks are not checked\n");
    return 0;
  }
  close(master);
  close(slave);
  return 1;
}

int main(void) {
  library = dlopen(OMREL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  check_description();
  int (*hand_over)(OmrelGetVar, OmrelSetVar, OmrelSetVarValue, OmrelFreeVarValue, OmrelUnused,
                   OmrelUnused, OmrelGetCommand, OmrelUnused, OmrelUnused, OmrelSetResult,
                   OmrelUnused, OmrelFreeValue, OmrelUnused, OmrelUnused, OmrelUnused, OmrelUnused,
                   OmrelUnused);
  OmrelCommand big, bigtest;
  find("_export_common_routines", &hand_over);
  find("quarnCommandBigNum", &big);
  find("quarnCommandBigTest", &bigtest);
  check(hand_over(get_var, set_var, NULL, NULL, NULL, NULL, get_command, NULL, NULL, set_result,
                  NULL, NULL, NULL, NULL, NULL, NULL, NULL) == 4,
        "callbacks counted");
  const int has_terminal = can_make_terminal();
  check_colours(bigtest, has_terminal);
  if (has_terminal) {
    check_graph(big, "C.UTF-8", "\033[0;31m\u25a0\033[0;91m\u25a0\033[0m\r\r\n");
    check_graph(big, "C", "\033[0;31m\xfe\033[0;91m\xfe\033[0m\r\r\n");
  }

  const char* const sum[] = {"big", "+", "5", "-3", NULL};
  check(big(NULL, 4, sum, NULL) == 0 && strcmp(result, "2") == 0, "big + 5 -3");
  const char* const test[] = {"bigtest", NULL};
  check(bigtest(NULL, 1, test, NULL) == 0 && strcmp(dllvar, "123") == 0, "bigtest");
  return failures == 0 ? 0 : 1;
}
