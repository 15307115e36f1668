# Debian's header-only packages for the tools, copied so that a cross build sees them without all of /usr/include.
set(OKO_HEADER_ONLY_INCLUDE_DIR ${CMAKE_BINARY_DIR}/header-only CACHE PATH
    "Folder that holds CLI11 (CLI/) and nlohmann-json (nlohmann/); the tools are left out without them")
foreach(package CLI nlohmann)
    if(EXISTS /usr/include/${package})
        file(COPY /usr/include/${package} DESTINATION ${OKO_HEADER_ONLY_INCLUDE_DIR})
    endif()
endforeach()
