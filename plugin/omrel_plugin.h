/*
 * The boundary between a host interpreter and the plug-in library omrel_bignum, usable from C
 * and C++.
 *
 * A host loads the library, reads its description, hands over its callbacks once with
 * _export_common_routines, registers command k of _get_command_list with the exported function
 * whose name is entry k of _get_function_list, and from then on calls those functions.
 *
 * All texts are NUL-terminated. Everything runs on the calling thread; nothing is locked, so all
 * calls into one loaded library come from one thread at a time.
 */
#ifndef OMREL_PLUGIN_H
#define OMREL_PLUGIN_H

/* Marks the exported functions. A host finds them by name in the loaded library. */
#if defined(_WIN32)
#define OMREL_EXPORT __declspec(dllexport)
#else
#define OMREL_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A variable of the host. The plug-in touches only this first field; the record is the host's. */
struct HostVar {
  char* value; /* the value text, owned by the host; may be null */
};

/* A command of the host, opaque to the plug-in. */
struct HostCommand;

/*
 * A command function: 0 for success, 1 for error. argv[0] is the command's name as invoked.
 * private_data is ignored. A failing command may leave the result as the host had it.
 */
typedef int (*OmrelCommand)(void* interp, int argc, const char* const* argv, void* private_data);

/* The host's callbacks that the plug-in calls; the host copies every text that it keeps. */
typedef struct HostVar* (*OmrelGetVar)(void* interp, const char* name, int minus_one);
typedef int (*OmrelSetVar)(void* interp, const char* name, const char* value, int minus_one);
typedef void (*OmrelSetVarValue)(struct HostVar* var, const char* value, int zero);
typedef void (*OmrelFreeVarValue)(struct HostVar* var);
typedef struct HostCommand* (*OmrelGetCommand)(void* interp, const char* name);
typedef void (*OmrelSetResult)(void* interp, const char* text, int zero);
typedef void (*OmrelFreeValue)(char* value);

/* An entry that is stored and never called. */
typedef void (*OmrelUnused)(void);

/*
 * The 17 callbacks, in the order in which _export_common_routines takes them.
 *
 * getVar        the variable's record, or null when there is none
 * setVar        creates or sets a variable; 0 on success
 * setVarValue   the variable now holds a copy of the text
 * freeVarValue  releases the value text; the record stays valid and takes setVarValue next
 * getCommand    the command's record, or null when the host has no such command
 * setResult     the running command's result is now a copy of the text
 * freeValue     releases a value text taken from a HostVar
 *
 * A null callback never crashes the plug-in: without getCommand no command runs, without getVar
 * no variable exists, and the others are skipped.
 */
struct HostCallbackTable {
  OmrelGetVar getVar;
  OmrelSetVar setVar;
  OmrelSetVarValue setVarValue;
  OmrelFreeVarValue freeVarValue;
  OmrelUnused unused4, unused5;
  OmrelGetCommand getCommand;
  OmrelUnused unused7, unused8;
  OmrelSetResult setResult;
  OmrelUnused unused10;
  OmrelFreeValue freeValue;
  OmrelUnused unused12, unused13, unused14, unused15, unused16;
};

/* The library's version number, 119 for 1.19. */
OMREL_EXPORT int _get_dll_version(void);

/* The library's date, "YYYYMMDD". */
OMREL_EXPORT const char* _get_dll_date(void);

/* One line that says what the library is. */
OMREL_EXPORT const char* _get_dll_comment(void);

/* The command names and, position by position, the names of the functions that implement them;
 * _get_export_count entries each, no terminating null. Static data; nothing frees it. */
OMREL_EXPORT const char* const* _get_command_list(void);
OMREL_EXPORT const char* const* _get_function_list(void);
OMREL_EXPORT int _get_export_count(void);

/* Stores the 17 callbacks, null ones included; returns how many were not null. A later call
 * replaces all of them. */
OMREL_EXPORT int _export_common_routines(
    OmrelGetVar getVar, OmrelSetVar setVar, OmrelSetVarValue setVarValue,
    OmrelFreeVarValue freeVarValue, OmrelUnused unused4, OmrelUnused unused5,
    OmrelGetCommand getCommand, OmrelUnused unused7, OmrelUnused unused8, OmrelSetResult setResult,
    OmrelUnused unused10, OmrelFreeValue freeValue, OmrelUnused unused12, OmrelUnused unused13,
    OmrelUnused unused14, OmrelUnused unused15, OmrelUnused unused16);

/* The command `big`: exact arithmetic on decimal integers. */
OMREL_EXPORT int quarnCommandBigNum(void* interp, int argc, const char* const* argv,
                                    void* private_data);

/* The command `bigtest`: reads the variable "pi", sets "dllvar", reports on standard output. */
OMREL_EXPORT int quarnCommandBigTest(void* interp, int argc, const char* const* argv,
                                     void* private_data);

#ifdef __cplusplus
}
#endif

#endif
