# The suite that runs in tclsh, through the Tcl host.
# Only GCC's sanitizers have a runtime that can be loaded into a finished program.
if(NOT OMREL_BUILD_HOST OR (OMREL_SANITIZE AND NOT CMAKE_CXX_COMPILER_ID STREQUAL GNU))
  return()
endif()

add_library(probe MODULE tcl/probe.c)
target_link_libraries(probe PRIVATE omrel_flags)

set(TCL_ENVIRONMENT "TCLLIBPATH={${CMAKE_BINARY_DIR}}" OMREL_BUILD=${CMAKE_BINARY_DIR}
                    OMREL_CMAKE=${CMAKE_COMMAND} OMREL_PROBE=$<TARGET_FILE:probe>)
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
foreach(MAJOR ${OMREL_TCLS})
  foreach(FILE ${SCRIPTS})
    cmake_path(GET FILE STEM NAME)
    add_test(NAME tcl${MAJOR}.${NAME} COMMAND ${OMREL_TCL${MAJOR}_SHELL} ${FILE})
    set_tests_properties(tcl${MAJOR}.${NAME} PROPERTIES ENVIRONMENT "${TCL_ENVIRONMENT}"
                                                        RESOURCE_LOCK ${NAME})
  endforeach()
endforeach()
