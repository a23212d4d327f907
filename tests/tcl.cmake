# The suite that runs in tclsh, through the Tcl host.
# Only GCC's sanitizers have a runtime that can be loaded into a finished program.
if(NOT OMREL_BUILD_HOST OR (OMREL_SANITIZE AND NOT CMAKE_CXX_COMPILER_ID STREQUAL GNU))
  return()
endif()

set(TCL_ENVIRONMENT "TCLLIBPATH={${CMAKE_BINARY_DIR}}" OMREL_BUILD=${CMAKE_BINARY_DIR}
                    OMREL_CMAKE=${CMAKE_COMMAND})
if(OMREL_SANITIZE MATCHES address)
  # tclsh is not built with the sanitizer, so its runtime must be loaded first. Tcl itself does not
  # free everything at exit.
  foreach(LIBRARY libasan.so libstdc++.so)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${LIBRARY}
                    OUTPUT_VARIABLE LIBRARY_PATH OUTPUT_STRIP_TRAILING_WHITESPACE)
    list(APPEND PRELOAD ${LIBRARY_PATH})
  endforeach()
  list(JOIN PRELOAD " " PRELOAD)
  list(APPEND TCL_ENVIRONMENT "LD_PRELOAD=${PRELOAD}" ASAN_OPTIONS=detect_leaks=0)
endif()

file(GLOB SCRIPTS CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/tcl/*.test
     ${CMAKE_SOURCE_DIR}/examples/*.tcl)
foreach(FILE ${SCRIPTS})
  get_filename_component(NAME ${FILE} NAME_WE)
  add_test(NAME tcl.${NAME} COMMAND ${TCL_TCLSH} ${FILE})
  set_tests_properties(tcl.${NAME} PROPERTIES ENVIRONMENT "${TCL_ENVIRONMENT}")
endforeach()
