# 64-bit Windows: where no 32-bit program can be run, its stand-in for tests.
set(OMREL_MINGW x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/i686-w64-mingw32.cmake)
