# Several sources in one translation unit: the headers of the standard library and of the packages are read once for all of
# them, which takes a third of the time. Off where each source is looked at alone.
option(OKO_UNITY "Compiles the programs and the tests in larger units" OFF)

# TARGET [SOURCE...]: these sources stay alone, for they have names in common with others.
function(oko_unity target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${OKO_UNITY} UNITY_BUILD_BATCH_SIZE 10)
    set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
