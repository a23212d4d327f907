// The description of the library, and the hand-over of the host's callbacks. The build hands in the
// version as a number and the date as digits.
#include "plugin/host_link.h"
#include "plugin/omrel_plugin.h"

namespace {

constexpr int COMMAND_COUNT = 2;
constexpr const char* COMMANDS[COMMAND_COUNT] = {"big", "bigtest"};
constexpr const char* FUNCTIONS[COMMAND_COUNT] = {"quarnCommandBigNum", "quarnCommandBigTest"};

template <typename... Callback>
int count_present(Callback... callback) {
  return (0 + ... + (callback != nullptr ? 1 : 0));
}

// Makes the library's own copy of the C++ runtime fit to catch what a host's callback throws with
// another copy: the unwinder aborts in a copy that has never thrown.
void prepare_for_foreign_exceptions() {
  try {
    throw 0;
  } catch (int) {
  }
}

}  // namespace

int _get_dll_version() { return OMREL_VERSION; }
const char* _get_dll_date() { return OMREL_DATE; }
const char* _get_dll_comment() { return "Omrel Tcl Big Number Math Plugin"; }
const char* const* _get_command_list() { return COMMANDS; }
const char* const* _get_function_list() { return FUNCTIONS; }
int _get_export_count() { return COMMAND_COUNT; }

int _export_common_routines(OmrelGetVar getVar, OmrelSetVar setVar, OmrelSetVarValue setVarValue,
                            OmrelFreeVarValue freeVarValue, OmrelUnused unused4,
                            OmrelUnused unused5, OmrelGetCommand getCommand, OmrelUnused unused7,
                            OmrelUnused unused8, OmrelSetResult setResult, OmrelUnused unused10,
                            OmrelFreeValue freeValue, OmrelUnused unused12, OmrelUnused unused13,
                            OmrelUnused unused14, OmrelUnused unused15, OmrelUnused unused16) {
  try {
    prepare_for_foreign_exceptions();
    omrel::host = {getVar,     setVar,   setVarValue, freeVarValue, unused4,  unused5,
                   getCommand, unused7,  unused8,     setResult,    unused10, freeValue,
                   unused12,   unused13, unused14,    unused15,     unused16};
    return count_present(getVar, setVar, setVarValue, freeVarValue, unused4, unused5, getCommand,
                         unused7, unused8, setResult, unused10, freeValue, unused12, unused13,
                         unused14, unused15, unused16);
  } catch (...) {
    return omrel::report_exception("_export_common_routines:", nullptr);
  }
}
