# Run by cpack: makes the installer of the staged files. It names each of them, so that uninstalling removes what was
# installed and nothing that somebody else put beside it.
file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${CPACK_TEMPORARY_DIRECTORY} ${CPACK_TEMPORARY_DIRECTORY}/*)
set(removal "")
set(folders "")
set(bytes 0)
foreach(file IN LISTS files)
    file(SIZE ${CPACK_TEMPORARY_DIRECTORY}/${file} size)
    math(EXPR bytes "${bytes} + ${size}")
    cmake_path(GET file PARENT_PATH folder)
    while(folder)
        list(APPEND folders ${folder})
        cmake_path(GET folder PARENT_PATH folder)
    endwhile()
    string(REPLACE "/" "\\" file ${file})
    string(APPEND removal "Delete \"$INSTDIR\\${file}\"\n")
endforeach()
list(REMOVE_DUPLICATES folders)
list(SORT folders ORDER DESCENDING)  # what lies in a folder comes before it
foreach(folder IN LISTS folders)
    string(REPLACE "/" "\\" folder ${folder})
    string(APPEND removal "RMDir \"$INSTDIR\\${folder}\"\n")
endforeach()
set(removal_file ${CPACK_TOPLEVEL_DIRECTORY}/RemoveFiles.nsh)
file(WRITE ${removal_file} "${removal}")

math(EXPR kilobytes "${bytes} / 1024")
set(installer ${CPACK_TOPLEVEL_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}-setup.exe)
execute_process(
    COMMAND ${CPACK_OKO_MAKENSIS} -V2 -WX -INPUTCHARSET UTF8
            -DVERSION=${CPACK_PACKAGE_VERSION} -DFILES=${CPACK_TEMPORARY_DIRECTORY} -DKILOBYTES=${kilobytes}
            -DREMOVE_FILES=${removal_file} -DINSTALLER=${installer} ${CPACK_OKO_INSTALLER_SCRIPT}
    COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_EXTERNAL_BUILT_PACKAGES ${installer})
