/* A host of one page: runs one command of the library.
 *
 *   cc host.c -o host -ldl           with omrel_plugin.h in the path of headers
 *   ./host ./omrel_bignum.so + 5 -3  prints 2
 *   ./host ./omrel_bignum.so += x 5  prints 15: the host's one variable, x, begins with 10
 */
#define _DEFAULT_SOURCE
#include <dlfcn.h>
#include <omrel_plugin.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static char* result;     /* of the running command */
static struct HostVar x; /* the one variable; a host of its own right has a table of them */

static void keep(char** place, const char* text) {
  char* copy = text != NULL ? strdup(text) : NULL;
  free(*place);
  *place = copy;
}

/* 0 to 3: variables. The record stays where it is; its text comes and goes. */
static struct HostVar* getVar(void* interp, const char* name, int minus_one) {
  (void)interp, (void)minus_one;
  return strcmp(name, "x") == 0 ? &x : NULL;
}
static int setVar(void* interp, const char* name, const char* value, int minus_one) {
  struct HostVar* var = getVar(interp, name, minus_one);
  if (var == NULL) return 1; /* no room for another variable */
  keep(&var->value, value);
  return 0;
}
static void setVarValue(struct HostVar* var, const char* value, int zero) {
  (void)zero;
  keep(&var->value, value);
}
static void freeVarValue(struct HostVar* var) { keep(&var->value, NULL); }

/* 6: the library asks for eval, vars, subst, set and expr once, and wants a record of each. */
static struct HostCommand* getCommand(void* interp, const char* name) {
  static int record;
  (void)interp, (void)name;
  return (struct HostCommand*)&record;
}

/* 9 and 11: the result; a text of a variable's value that the library gives back itself. */
static void setResult(void* interp, const char* text, int zero) {
  (void)interp, (void)zero;
  keep(&result, text);
}
static void freeValue(char* value) { free(value); }

/* 4, 5, 7, 8, 10 and 12 to 16 are never called. A host may hand over null or what it has. */
static void unused(void) { abort(); }

/* ISO C has no conversion from an object pointer to a function pointer; POSIX promises one. */
static void find(void* library, const char* name, void* function) {
  void* symbol = dlsym(library, name);
  if (symbol == NULL) fprintf(stderr, "no %s\n", name), exit(2);
  memcpy(function, &symbol, sizeof symbol);
}

int main(int argc, char** argv) {
  void* library = argc > 1 ? dlopen(argv[1], RTLD_NOW) : NULL;
  const char* const* (*commands)(void), * const* (*functions)(void);
  int (*take)(OmrelGetVar, OmrelSetVar, OmrelSetVarValue, OmrelFreeVarValue, OmrelUnused,
              OmrelUnused, OmrelGetCommand, OmrelUnused, OmrelUnused, OmrelSetResult, OmrelUnused,
              OmrelFreeValue, OmrelUnused, OmrelUnused, OmrelUnused, OmrelUnused, OmrelUnused);
  OmrelCommand command;
  int code;
  if (library == NULL) {
    fprintf(stderr, "usage: host LIBRARY WORD ARGUMENT ...\n%s\n", argc > 1 ? dlerror() : "");
    return 2;
  }
  find(library, "_get_command_list", &commands);
  find(library, "_get_function_list", &functions);
  find(library, "_export_common_routines", &take);
  find(library, functions()[0], &command);
  take(getVar, setVar, setVarValue, freeVarValue, unused, unused, getCommand, unused, unused,
       setResult, unused, freeValue, unused, unused, unused, unused, unused);

  keep(&x.value, "10");
  argv[1] = (char*)commands()[0]; /* a command's first text is its own name: big */
  code = command(NULL, argc - 1, (const char* const*)argv + 1, NULL);
  printf("%s\n", result != NULL ? result : "");
  keep(&result, NULL);
  keep(&x.value, NULL);
  return code;
}
