# 64-bit Windows, cross-built with Debian's MinGW. Its runtime goes into each
# library and program, so that nothing but the system's own DLLs is needed.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(prefix x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${prefix}-gcc-posix)
set(CMAKE_CXX_COMPILER ${prefix}-g++-posix)
set(CMAKE_RC_COMPILER ${prefix}-windres)
# These know objects that are optimised at link time.
find_program(CMAKE_AR ${prefix}-gcc-ar-posix REQUIRED)
find_program(CMAKE_RANLIB ${prefix}-gcc-ranlib-posix REQUIRED)
set(CMAKE_FIND_ROOT_PATH /usr/${prefix})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# At -O0 gcc 12 cannot read the parts again into which it divides a program that
# is optimised at link time.
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static -flto-partition=none")
endforeach()
set(CMAKE_CROSSCOMPILING_EMULATOR
  ${CMAKE_CURRENT_LIST_DIR}/../../tools/run_windows_program.sh)
