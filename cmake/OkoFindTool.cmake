# Finds a program of the build by what it can do: PATH may name an old or a broken one first.
#   oko_find_tool(VARIABLE NAMES NAME... ASK ARGUMENT... ANSWERS REGEX PURPOSE TEXT PACKAGE NAME)
# Takes the first program that ends with 0 when it is asked and whose answer matches, and stops with one sentence when there is none.
function(oko_find_tool variable)
    cmake_parse_arguments(PARSE_ARGV 1 tool "" "ANSWERS;PURPOSE;PACKAGE" "NAMES;ASK")
    find_program(${variable} NAMES ${tool_NAMES} VALIDATOR oko_tool_answers)
    if(NOT ${variable})
        list(JOIN tool_NAMES " or " names)
        message(FATAL_ERROR "No working ${names} was found, which ${tool_PURPOSE} needs: install Debian's ${tool_PACKAGE} (scripts/setup --package does).")
    endif()
endfunction()

# The validator of find_program, which calls it in the scope of oko_find_tool.
function(oko_tool_answers result candidate)
    execute_process(COMMAND ${candidate} ${tool_ASK} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0 OR NOT output MATCHES "${tool_ANSWERS}")
        set(${result} FALSE PARENT_SCOPE)
    endif()
endfunction()
