# Compiler settings of all our own targets: warnings are errors, and sanitizers where the preset asks for them.
add_library(oko_settings INTERFACE)
target_include_directories(oko_settings INTERFACE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/include)
if(MSVC)
    target_compile_options(oko_settings INTERFACE /W4 /WX /utf-8 /permissive-)
else()
    target_compile_options(oko_settings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
    # GCC 12 sees overlaps in optimised "literal" + std::string where there are none; later versions do not.
    target_compile_options(oko_settings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
    # clang takes what GCC's own library uses in std::stable_sort for our use of it.
    target_compile_options(oko_settings INTERFACE $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>)
endif()
if(WIN32)
    target_compile_definitions(oko_settings INTERFACE NOMINMAX UNICODE _UNICODE _WIN32_WINNT=0x0601)
endif()
if(MINGW)
    # The compiler's own libraries go into each file, so that it runs where no compiler is.
    add_link_options(-static)
    # The same sources give the same bytes, whenever and in whatever folder they are built.
    add_link_options(-Wl,--no-insert-timestamp)
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>
        $<$<COMPILE_LANGUAGE:CXX>:-ffile-prefix-map=${CMAKE_BINARY_DIR}=./build>)
endif()
if(OKO_SANITIZE)
    add_compile_options(-fsanitize=${OKO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${OKO_SANITIZE})
endif()
if(OKO_FUZZ)
    # Coverage for the fuzzer; its own main function is linked into the targets alone.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
