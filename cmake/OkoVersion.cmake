# The version that project() names reaches C++ through this header.
configure_file(${CMAKE_CURRENT_LIST_DIR}/OkoVersion.h.in ${CMAKE_BINARY_DIR}/generated/OkoVersion.h @ONLY)
add_library(oko_version INTERFACE)
target_include_directories(oko_version INTERFACE ${CMAKE_BINARY_DIR}/generated)
