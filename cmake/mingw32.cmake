# 32-bit Windows from Linux, with Debian's mingw-w64: preset win32.
#
# The posix thread model: the library starts no threads, but GoogleTest needs std::mutex, which the
# win32 model of GCC 12 lacks. -static links the compiler's libraries statically. The DLL uses only the
# headers of libstdc++: the library itself needs winpthreads, which Windows XP cannot load.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)

set(triplet i686-w64-mingw32)
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# -mstackrealign: a 32-bit caller keeps the stack on 4 octets only. i686 is what Windows XP needs.
# _WIN32_WINNT 0x0501 is Windows XP: nothing newer is called.
foreach(lang C CXX)
    set(CMAKE_${lang}_FLAGS_INIT "-march=i686 -mstackrealign -D_WIN32_WINNT=0x0501")
endforeach()
# Equal sources give equal files; addresses may be randomised, data is not executed.
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT
        "-static -Wl,--no-insert-timestamp,--dynamicbase,--nxcompat,--major-os-version=5,--minor-os-version=1,--major-subsystem-version=5,--minor-subsystem-version=1")
endforeach()

# Tests run through Wine: tools/wine32-setup.sh makes one and prints its wrapper's path.
if(DEFINED ENV{WINE32} AND NOT "$ENV{WINE32}" STREQUAL "")
    set(CMAKE_CROSSCOMPILING_EMULATOR $ENV{WINE32} CACHE FILEPATH "runs Win32 programs")
endif()
