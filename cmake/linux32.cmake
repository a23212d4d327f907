# 32-bit Linux by the 64-bit compiler. What it makes runs on the machine that makes it. GMP is that
# of the 32-bit Debian that scripts/test-windows makes, if it is there; linked statically, since
# that system's C library is not the one to run with. (The benchmark, which needs Tcl too, runs
# inside that Debian.)
set(OMREL_DEBIAN32 ${CMAKE_CURRENT_LIST_DIR}/../build/wine/debian/usr)
set(OMREL_GMP_FILE libgmp.a)
set(CMAKE_C_FLAGS_INIT -m32)
set(CMAKE_CXX_FLAGS_INIT "-m32 -idirafter ${OMREL_DEBIAN32}/include/i386-linux-gnu")
set(CMAKE_EXE_LINKER_FLAGS_INIT -no-pie) # as that static library wants it
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_PREFIX_PATH ${OMREL_DEBIAN32})
set(CMAKE_IGNORE_PATH /usr/lib/x86_64-linux-gnu /lib/x86_64-linux-gnu)
