# The header-only libraries of the tools, from Debian's packages, in a folder of their own: a cross build must not see all of
# /usr/include. Boost is large, so it is linked and not copied.
set(OKO_HEADER_ONLY_INCLUDE_DIR ${CMAKE_BINARY_DIR}/header-only CACHE PATH
    "Folder with the headers of CLI11 (CLI/), nlohmann-json (nlohmann/) and, for the emulator and oko-host's page, Boost (boost/)")

# FOLDER COPY|LINK PACKAGE: the headers of one library.
function(oko_header_only folder how package)
    set(target ${OKO_HEADER_ONLY_INCLUDE_DIR}/${folder})
    if(EXISTS ${target})
        return()
    endif()
    if(NOT EXISTS /usr/include/${folder})
        message(FATAL_ERROR "The tools need the headers of ${folder}: install Debian's ${package} (scripts/setup does), "
            "or name a folder that has them (-DOKO_HEADER_ONLY_INCLUDE_DIR=...).")
    endif()
    if(how STREQUAL COPY)
        file(COPY /usr/include/${folder} DESTINATION ${OKO_HEADER_ONLY_INCLUDE_DIR})
    else()
        file(MAKE_DIRECTORY ${OKO_HEADER_ONLY_INCLUDE_DIR})
        file(CREATE_LINK /usr/include/${folder} ${target} SYMBOLIC)
    endif()
endfunction()

oko_header_only(CLI COPY libcli11-dev)
oko_header_only(nlohmann COPY nlohmann-json3-dev)
if(OKO_PAGE OR OKO_EMULATOR)
    oko_header_only(boost LINK libboost-dev)
endif()
