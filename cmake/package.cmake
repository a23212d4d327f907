# The Debian package, by `cpack` in the build directory.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tcl-omrel-bignum)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "exact arithmetic on long decimal integers for Tcl")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "The package omrel_bignum brings the command big into Tcl: arithmetic,
comparison, powers, roots, factorials, Fibonacci numbers, bits and
fixed-point division on signed decimal integers of up to 6,499 digits,
from text to text.")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER
    "omrel_bignum maintainers <maintainers@omrel-bignum.example>"
    CACHE STRING "Name and address in the Debian package")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION interpreters)
list(TRANSFORM OMREL_TCLS REPLACE 8 tcl8.6 OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_DEPENDS)
list(TRANSFORM CPACK_DEBIAN_PACKAGE_DEPENDS REPLACE "^9$" tcl9.0)
list(JOIN CPACK_DEBIAN_PACKAGE_DEPENDS " | " CPACK_DEBIAN_PACKAGE_DEPENDS)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
set(CPACK_INSTALL_CMAKE_PROJECTS ${CMAKE_BINARY_DIR} ${PROJECT_NAME} tcl /)
set(CPACK_OMREL_SOURCE ${CMAKE_SOURCE_DIR})
include(CPack)
