# The options of the build.

option(TAMSEL_INSTALL "Install libraries, headers, programs and package files" ${PROJECT_IS_TOP_LEVEL})
option(TAMSEL_WERROR "Treat warnings as errors, up to g++ 12" OFF)
option(TAMSEL_FUZZ "Build the libFuzzer targets (clang only)" OFF)
option(TAMSEL_BUILD_GTEST
    "Build GoogleTest from /usr/src/googletest, for a target that has no library of it" OFF)
if(PROJECT_IS_TOP_LEVEL)
    option(BUILD_SHARED_LIBS "Build libTamsel as a shared library; the core is always static" ON)
    option(BUILD_TESTING "Build the suite and the benchmarks" ON)
    option(TAMSEL_OFTEN_BUILT "For tools/mutants, which builds often: fewer, larger files" OFF)
    if(WIN32 AND CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR AND BUILD_TESTING)
        # Tests are listed by running their programs.
        message(STATUS "Without Wine the suite is left out; tools/wine32-setup.sh makes a Wine, "
            "WINE32 names its wrapper, and ./dev win32 does both")
        set(BUILD_TESTING OFF)
    endif()
endif()
