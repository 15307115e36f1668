# GoogleTest: an installed package, or the sources that Debian's package googletest brings. The sources wherever the
# build has a target or sanitizers of its own: a cross build would find this machine's library, and a library without
# the thread sanitizer makes the sanitizer report races that are none.
if(NOT TARGET GTest::gtest AND NOT CMAKE_CROSSCOMPILING AND NOT OKO_SANITIZE)
    find_package(GTest QUIET)
endif()
if(NOT TARGET GTest::gtest)
    set(sources /usr/src/googletest)
    if(NOT EXISTS ${sources}/CMakeLists.txt)
        message(FATAL_ERROR "GoogleTest is missing: find_package(GTest) has nothing that fits this build, and there is "
            "no ${sources}. scripts/setup installs it on Debian; -DBUILD_TESTING=OFF builds without tests.")
    endif()
    set(INSTALL_GTEST OFF)
    set(BUILD_GMOCK OFF)
    add_subdirectory(${sources} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()
include(GoogleTest)
