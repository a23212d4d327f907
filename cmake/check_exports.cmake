# Checks that LIBRARY shows its nine functions and nothing else, and needs the C library alone.
include(${CMAKE_CURRENT_LIST_DIR}/exports.cmake)

if(LIBRARY MATCHES "[.]dll$")
  execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE headers
                  COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "\n\t[[] *[0-9]+[]] [_a-zA-Z][^\n]*" exports "${headers}")
  list(TRANSFORM exports REPLACE "^.*[]] " "")
  if(NOT exports STREQUAL OMREL_EXPORTS)
    message(FATAL_ERROR "exports: ${exports}")
  endif()
  string(REGEX MATCHALL "DLL Name: [^\n]*" needed "${headers}")
  list(SORT needed CASE INSENSITIVE)
  if(NOT needed STREQUAL "DLL Name: KERNEL32.dll;DLL Name: msvcrt.dll")
    message(FATAL_ERROR "needs other than the system's libraries: ${needed}")
  endif()
  return()
endif()

execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY} OUTPUT_VARIABLE symbols
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "(^|\n)[^ ]+" exports "${symbols}")
list(TRANSFORM exports STRIP)
list(SORT exports)
if(NOT exports STREQUAL OMREL_EXPORTS)
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
