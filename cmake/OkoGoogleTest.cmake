# GoogleTest from the sources that Debian's package googletest brings, so that it carries the build's own sanitizers and
# target.
if(NOT TARGET gtest)
    set(INSTALL_GTEST OFF)
    set(BUILD_GMOCK OFF)
    add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()
include(GoogleTest)
