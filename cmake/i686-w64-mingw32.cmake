# 32-bit Windows by MinGW-w64, with POSIX threads, which its C++ library is complete with. Debian
# tells the two kinds of threads apart by the compiler's name.
if(NOT DEFINED OMREL_MINGW)
  set(OMREL_MINGW i686-w64-mingw32)
endif()
set(CMAKE_SYSTEM_NAME Windows)
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR ${OMREL_MINGW})
find_program(CMAKE_C_COMPILER NAMES ${OMREL_MINGW}-gcc-posix ${OMREL_MINGW}-gcc REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${OMREL_MINGW}-g++-posix ${OMREL_MINGW}-g++ REQUIRED)
set(CMAKE_FIND_ROOT_PATH /usr/${OMREL_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
