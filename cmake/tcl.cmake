# The Tcls to build for. OMREL_TCLS lists the major versions, 8 for 8.6 and 9, whose header, stub
# library and tclsh are there; each has its OMREL_TCL8_INCLUDE, OMREL_TCL8_STUB, OMREL_TCL8_SHELL.
set(OMREL_TCLS)
set(OMREL_TCL8_VERSIONS 8.6)
set(OMREL_TCL9_VERSIONS 9.1 9.0)
set(OMREL_VERSION_SCRIPT ${CMAKE_BINARY_DIR}/tcl_version.tcl)
file(WRITE ${OMREL_VERSION_SCRIPT} "puts $tcl_version\n")

foreach(MAJOR 8 9)
  set(VERSIONS ${OMREL_TCL${MAJOR}_VERSIONS})
  list(TRANSFORM VERSIONS PREPEND tcl OUTPUT_VARIABLE DIRECTORIES)
  list(TRANSFORM VERSIONS PREPEND tclstub OUTPUT_VARIABLE LIBRARIES)
  list(TRANSFORM VERSIONS PREPEND tclsh OUTPUT_VARIABLE SHELLS)
  find_path(OMREL_TCL${MAJOR}_INCLUDE tcl.h PATH_SUFFIXES ${DIRECTORIES} tcl)
  find_library(OMREL_TCL${MAJOR}_STUB NAMES ${LIBRARIES} tclstub)
  find_program(OMREL_TCL${MAJOR}_SHELL NAMES ${SHELLS} tclsh)
  mark_as_advanced(OMREL_TCL${MAJOR}_INCLUDE OMREL_TCL${MAJOR}_STUB OMREL_TCL${MAJOR}_SHELL)
  if(NOT OMREL_TCL${MAJOR}_INCLUDE OR NOT OMREL_TCL${MAJOR}_STUB OR NOT OMREL_TCL${MAJOR}_SHELL)
    continue()
  endif()

  # A name without a number may be any version's.
  file(STRINGS ${OMREL_TCL${MAJOR}_INCLUDE}/tcl.h IN_HEADER REGEX "TCL_VERSION[ \t]+\"")
  execute_process(COMMAND ${OMREL_TCL${MAJOR}_SHELL} ${OMREL_VERSION_SCRIPT}
                  OUTPUT_VARIABLE IN_SHELL OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(IN_SHELL IN_LIST VERSIONS AND IN_HEADER MATCHES "\"${IN_SHELL}\"")
    list(APPEND OMREL_TCLS ${MAJOR})
  endif()
endforeach()
if(NOT OMREL_TCLS)
  message(FATAL_ERROR "no Tcl 8.6 or 9 with header, stub library and tclsh was found; without the "
                      "Tcl host: -DOMREL_BUILD_HOST=OFF")
endif()

# The one for all that needs just one.
list(GET OMREL_TCLS 0 MAJOR)
set(TCL_TCLSH ${OMREL_TCL${MAJOR}_SHELL})
set(TCL_INCLUDE_PATH ${OMREL_TCL${MAJOR}_INCLUDE})
set(TCL_STUB_LIBRARY ${OMREL_TCL${MAJOR}_STUB})
