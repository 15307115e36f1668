# Debian's header-only packages for the tools, brought together so that a cross build sees them without all of
# /usr/include. Boost is large, so it is linked and not copied.
set(OKO_HEADER_ONLY_INCLUDE_DIR ${CMAKE_BINARY_DIR}/header-only CACHE PATH
    "Folder that holds CLI11 (CLI/) and nlohmann-json (nlohmann/), without which the tools are left out, and for oko-host's page boost/")
foreach(package CLI nlohmann)
    if(EXISTS /usr/include/${package})
        file(COPY /usr/include/${package} DESTINATION ${OKO_HEADER_ONLY_INCLUDE_DIR})
    endif()
endforeach()
if(EXISTS /usr/include/boost AND NOT EXISTS ${OKO_HEADER_ONLY_INCLUDE_DIR}/boost)
    file(MAKE_DIRECTORY ${OKO_HEADER_ONLY_INCLUDE_DIR})
    file(CREATE_LINK /usr/include/boost ${OKO_HEADER_ONLY_INCLUDE_DIR}/boost SYMBOLIC)
endif()
