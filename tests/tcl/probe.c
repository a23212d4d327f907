/* A plug-in that makes any callbacks: probe ?STEP ?ARGUMENT ...?? ... */
#include <stdio.h>
#include <string.h>

#include "plugin/omrel_plugin.h"

static struct HostCallbackTable host;
static const char* const NAMES[] = {"probe"};
static const char* const FUNCTIONS[] = {"quarnCommandBigNum"};

int _get_dll_version(void) { return 1; }
const char* _get_dll_date(void) { return ""; }
const char* _get_dll_comment(void) { return ""; }
const char* const* _get_command_list(void) { return NAMES; }
const char* const* _get_function_list(void) { return FUNCTIONS; }
int _get_export_count(void) { return 1; }

int _export_common_routines(OmrelGetVar e0, OmrelSetVar e1, OmrelSetVarValue e2,
                            OmrelFreeVarValue e3, OmrelUnused e4, OmrelUnused e5,
                            OmrelGetCommand e6, OmrelUnused e7, OmrelUnused e8, OmrelSetResult e9,
                            OmrelUnused e10, OmrelFreeValue e11, OmrelUnused e12, OmrelUnused e13,
                            OmrelUnused e14, OmrelUnused e15, OmrelUnused e16) {
  host = (struct HostCallbackTable){e0, e1,  e2,  e3,  e4,  e5,  e6,  e7, e8,
                                    e9, e10, e11, e12, e13, e14, e15, e16};
  return 17;
}

/* Texts that the host is given all come from one buffer. */
static const char* passed(const char* text) {
  static char buffer[100];
  snprintf(buffer, sizeof buffer, "%s", text);
  return buffer;
}

int quarnCommandBigNum(void* interp, int count, const char* const* words, void* unused) {
  struct HostVar* vars[9] = {NULL};
  int last = -1, status = 0;
  (void)unused;
  for (int i = 1; i < count; ++i) {
    const char step = words[i][0];
    if (step == 'g') vars[++last] = host.getVar(interp, words[++i], -1);
    if (step == 'o') --last; /* the older variable */
    if (step == 'u') host.setVarValue(vars[last], passed(words[++i]), 0);
    if (step == 'f') host.freeVarValue(vars[last]);
    if (step == 's') status += host.setVar(interp, words[i + 1], passed(words[i + 2]), -1), i += 2;
    if (step == 'c') printf("%d", host.getCommand(interp, words[++i]) != NULL);
    if (step == 'r') host.setResult(interp, passed(words[++i]), 0);
    if (step == 't') host.setResult(interp, passed(words[++i] + 1), 0);
    if (step == 'p') fputs(words[++i], stdout);
    if (strchr("guf", step) == NULL) continue;
    printf("<%s>", vars[last] == NULL          ? "none"
                   : vars[last]->value == NULL ? ""
                                               : vars[last]->value);
  }
  return status;
}
