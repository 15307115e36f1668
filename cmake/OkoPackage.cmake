# The package: what "cmake --install" puts in place, the pages as HTML and the notices, as a ZIP and as an installer.
# cpack makes both; scripts/package brings what that needs.
include(OkoFindTool)
oko_find_tool(OKO_PANDOC NAMES pandoc ASK --list-input-formats ANSWERS "gfm" PURPOSE "the package's pages" PACKAGE pandoc)
oko_find_tool(OKO_MAKENSIS NAMES makensis ASK -VERSION ANSWERS "^v3" PURPOSE "the installer" PACKAGE nsis)

# The pages keep their places, so that their links hold.
set(html ${CMAKE_BINARY_DIR}/html)
set(filter ${CMAKE_SOURCE_DIR}/packaging/html/links.lua)
set(style ${CMAKE_SOURCE_DIR}/packaging/html/style.html)
file(GLOB pages RELATIVE ${CMAKE_SOURCE_DIR} CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/*.md ${CMAKE_SOURCE_DIR}/docs/*.md)
foreach(page IN LISTS pages)
    string(REGEX REPLACE "\\.md$" ".html" output ${html}/${page})
    cmake_path(GET page STEM title)
    cmake_path(GET output PARENT_PATH folder)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        COMMAND ${OKO_PANDOC} --from=gfm --to=html5 --standalone --wrap=none --lua-filter=${filter}
                --include-in-header=${style} --metadata=pagetitle:${title} --metadata=lang:en
                --output=${output} ${CMAKE_SOURCE_DIR}/${page}
        DEPENDS ${CMAKE_SOURCE_DIR}/${page} ${filter} ${style} VERBATIM)
    list(APPEND outputs ${output})
    cmake_path(GET page PARENT_PATH folder)
    install(FILES ${output} DESTINATION ./${folder})
endforeach()
add_custom_target(oko-html ALL DEPENDS ${outputs})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/pictures ${CMAKE_SOURCE_DIR}/docs/prometheus DESTINATION docs)

# The terms of what is linked into the programs, as the packages that it comes from state them; docs/third-party.md says
# what is whose.
foreach(notice
        g++-mingw-w64-x86-64-posix=gcc mingw-w64-x86-64-dev=mingw-w64 libcli11-dev=cli11
        nlohmann-json3-dev=nlohmann-json libboost1.74-dev=boost libjs-dygraphs=dygraphs nsis=nsis)
    string(REPLACE "=" ";" notice ${notice})
    list(GET notice 0 package)
    list(GET notice 1 name)
    install(FILES /usr/share/doc/${package}/copyright DESTINATION licenses RENAME ${name}.txt)
endforeach()

set(CPACK_GENERATOR ZIP External)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_SOURCE_DIR}/build/package)
set(CPACK_PACKAGE_FILE_NAME OkoLabBoldLine-${PROJECT_VERSION}-win64)
set(CPACK_STRIP_FILES OFF)  # the library has been, and the rest is as it was tested
set(CPACK_VERBATIM_VARIABLES ON)
# CPack's own installers are 32-bit programs. This one is a 64-bit program, as what it installs is.
set(CPACK_EXTERNAL_ENABLE_STAGING ON)
set(CPACK_EXTERNAL_PACKAGE_SCRIPT ${CMAKE_SOURCE_DIR}/packaging/installer/BuildInstaller.cmake)
set(CPACK_OKO_MAKENSIS ${OKO_MAKENSIS})
set(CPACK_OKO_INSTALLER_SCRIPT ${CMAKE_SOURCE_DIR}/packaging/installer/Installer.nsi)
include(CPack)
