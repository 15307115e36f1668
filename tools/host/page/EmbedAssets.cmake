# Writes a C++ source that holds files as arrays of numbers, which every compiler takes quickly at any length:
#   cmake -DOUTPUT=FILE.cpp "-DFILES=NAME=PATH,..." -P EmbedAssets.cmake
set(arrays "")
set(rows "")
set(type_html "text/html; charset=utf-8")
set(type_css "text/css; charset=utf-8")
set(type_js "text/javascript; charset=utf-8")
set(type_svg "image/svg+xml")
set(type_txt "text/plain; charset=utf-8")
string(REPLACE "," ";" FILES "${FILES}")
set(number 0)
foreach(file IN LISTS FILES)
    string(REGEX MATCH "^([^=]+)=(.+)$" matched "${file}")
    set(name "${CMAKE_MATCH_1}")
    set(path "${CMAKE_MATCH_2}")
    string(REGEX MATCH "[a-z]+$" extension "${name}")
    if(NOT DEFINED type_${extension})
        message(FATAL_ERROR "no content type is known for ${name}")
    endif()
    file(SIZE "${path}" size)
    file(READ "${path}" bytes HEX)
    string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
    string(REGEX REPLACE "(................................................................................)" "\\1\n"
           bytes "${bytes}")
    string(APPEND arrays "// ${name}\nconst unsigned char bytes${number}[] = {\n${bytes}};\n")
    string(APPEND rows "    {\"${name}\", \"${type_${extension}}\", "
                       "{reinterpret_cast<const char*>(bytes${number}), ${size}}},\n")
    math(EXPR number "${number} + 1")
endforeach()
file(WRITE "${OUTPUT}" "#include \"page/Assets.h\"

#include <string_view>

namespace {

${arrays}
const Asset kAssets[] = {
${rows}};

}  // namespace

const Asset* FindAsset(std::string_view name) {
    for (const Asset& asset : kAssets) {
        if (asset.name == name) {
            return &asset;
        }
    }
    return nullptr;
}
")
