# The page's files as a source: OKO_ASSETS_SOURCE.
file(GLOB page_files CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/assets/*)
set(files dygraph.js=${OKO_DYGRAPHS_DIR}/dygraph.min.js dygraph.css=${OKO_DYGRAPHS_DIR}/dygraph.min.css)
foreach(file IN LISTS page_files)
    get_filename_component(name ${file} NAME)
    list(APPEND files ${name}=${file})
endforeach()
list(TRANSFORM files REPLACE "^[^=]+=" "" OUTPUT_VARIABLE paths)
list(JOIN files "," files)
set(OKO_ASSETS_SOURCE ${CMAKE_CURRENT_BINARY_DIR}/Assets.cpp)
add_custom_command(
    OUTPUT ${OKO_ASSETS_SOURCE}
    COMMAND ${CMAKE_COMMAND} -DOUTPUT=${OKO_ASSETS_SOURCE} "-DFILES=${files}" -P ${CMAKE_CURRENT_LIST_DIR}/EmbedAssets.cmake
    DEPENDS ${paths} ${CMAKE_CURRENT_LIST_DIR}/EmbedAssets.cmake
    COMMENT "Embedding the page"
    VERBATIM)
