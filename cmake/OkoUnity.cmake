# Several sources in one translation unit: the headers of the standard library, the packages and the system are read once for all of
# them, which takes a third of the time. Off where each source is looked at alone.
option(OKO_UNITY "Compiles the library, the programs and the tests in larger units" OFF)

# TARGET [SOURCE...]: these sources stay alone. The others of a target have no name in common, not in anonymous namespaces either. Sources of
# a system (win32, posix) share units among themselves only: what the system's headers define stays out of the way of other sources.
function(oko_unity target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${OKO_UNITY} UNITY_BUILD_MODE GROUP)
    set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "\\.cpp$")
    set(system ${sources})
    list(FILTER system INCLUDE REGEX "/(win32|posix)/")
    list(FILTER sources EXCLUDE REGEX "/(win32|posix)/")
    oko_unity_groups(${target}-system ${system})
    oko_unity_groups(${target} ${sources})
endfunction()

# NAME SOURCE...: puts thirty each into a unit.
function(oko_unity_groups name)
    set(count 0)
    foreach(source IN LISTS ARGN)
        math(EXPR group "${count} / 30")
        math(EXPR count "${count} + 1")
        set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${name}-${group})
    endforeach()
endfunction()

# TARGET...: compiled without optimisation, because they only test what is optimised.
function(oko_compile_quickly)
    if(MINGW)
        foreach(target IN LISTS ARGN)
            target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-O0>)
        endforeach()
    endif()
endfunction()
