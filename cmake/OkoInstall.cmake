# What "cmake --install" puts where. A host's project then finds it: find_package(OkoLabBoldLine).
include(CMakePackageConfigHelpers)
include(OkoFindTool)
set(package lib/cmake/OkoLabBoldLine)

install(TARGETS OkoLabBoldLine EXPORT OkoLabBoldLineTargets RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
if(MINGW)
    install(FILES ${OKO_DEBUG_FILE} DESTINATION debug)
endif()
if(TARGET oko-host)
    install(TARGETS oko-host RUNTIME DESTINATION bin)
endif()
if(TARGET oko-control-emulator)
    install(TARGETS oko-control-emulator RUNTIME DESTINATION bin)
    install(DIRECTORY ${CMAKE_SOURCE_DIR}/tools/emulator/scenarios DESTINATION bin)
endif()
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/oko DESTINATION include)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/examples DESTINATION .)

# Microsoft's linker wants an import library of its own kind. This one holds the names of the export list and nothing
# that depends on a compiler.
if(OKO_PACKAGE)
    oko_find_tool(OKO_LLD_LINK NAMES lld-link-19 ASK --version ANSWERS "LLD 19" PURPOSE "the import library for Microsoft's linker" PACKAGE lld-19)
    set(exports ${CMAKE_SOURCE_DIR}/src/core/win32/Exports.def)
    set(microsoft_library ${CMAKE_BINARY_DIR}/lib/OkoLabBoldLine.lib)
    add_custom_command(OUTPUT ${microsoft_library}
        COMMAND ${OKO_LLD_LINK} /lib /nologo /machine:x64 /def:${exports} /out:${microsoft_library}
        DEPENDS ${exports} VERBATIM)
    add_custom_target(oko-microsoft-import-library ALL DEPENDS ${microsoft_library})
    install(FILES ${microsoft_library} DESTINATION lib)
endif()

install(EXPORT OkoLabBoldLineTargets NAMESPACE OkoLabBoldLine:: DESTINATION ${package})
configure_package_config_file(${CMAKE_SOURCE_DIR}/packaging/OkoLabBoldLineConfig.cmake.in
    ${CMAKE_BINARY_DIR}/package-config/OkoLabBoldLineConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package-config/OkoLabBoldLineConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(DIRECTORY ${CMAKE_BINARY_DIR}/package-config/ DESTINATION ${package})
