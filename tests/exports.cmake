# Checks that LIBRARY shows its nine functions and nothing else, and needs the C library alone.
set(EXPECTED_EXPORTS
    _export_common_routines _get_command_list _get_dll_comment _get_dll_date _get_dll_version
    _get_export_count _get_function_list quarnCommandBigNum quarnCommandBigTest)

execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY} OUTPUT_VARIABLE symbols
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "(^|\n)[^ ]+" exports "${symbols}")
list(TRANSFORM exports STRIP)
list(SORT exports)
if(NOT exports STREQUAL EXPECTED_EXPORTS)
  message(FATAL_ERROR "exports: ${exports}")
endif()

execute_process(COMMAND ${READELF} -dW ${LIBRARY} OUTPUT_VARIABLE dynamic
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "NEEDED[^[]*[[][^]]*" needed "${dynamic}")
if(NOT needed MATCHES "libc[.]so")
  message(FATAL_ERROR "no C library among the needed libraries; is the list read right? ${needed}")
endif()
list(FILTER needed EXCLUDE REGEX "[[](libc|libm|ld-linux[^.]*)[.]so")
if(needed)
  message(FATAL_ERROR "needs more than the C library: ${needed}")
endif()
