# The nine functions that the library shows, by the names that hosts look up: each with its own
# leading underscore or none, whatever a 32-bit C compiler puts before its symbols. In the order of
# their bytes, as a library lists them.
set(OMREL_EXPORTS
    _export_common_routines _get_command_list _get_dll_comment _get_dll_date _get_dll_version
    _get_export_count _get_function_list quarnCommandBigNum quarnCommandBigTest)

# Writes them as linkers want them: exports.map for Linux, exports.def for Windows.
function(omrel_write_exports DIRECTORY)
  list(JOIN OMREL_EXPORTS ";\n    " NAMES)
  file(CONFIGURE OUTPUT ${DIRECTORY}/exports.map @ONLY
       CONTENT "{\n  global:\n    @NAMES@;\n  local:\n    *;\n};\n")
  list(JOIN OMREL_EXPORTS "\n  " NAMES)
  file(CONFIGURE OUTPUT ${DIRECTORY}/exports.def @ONLY
       CONTENT "LIBRARY omrel_bignum.dll\nEXPORTS\n  @NAMES@\n")
endfunction()
