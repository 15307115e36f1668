include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)
run_host(${HOST})
expect_equal("${result}" 0)
expect_equal("${errors}" "")
set(number "[0-9]+[.][0-9]+")
expect_lines("${output}"
    "Incubator: OKO-Lab bold line Simulator"
    "log: OKO-Lab bold line Init[(][)]"
    "H301-T: ${number}, target 37[.]000000"
    "Objective: ${number}, target none"
    "CO2: ${number}, target ${number}"
    "O2: ${number}, target ${number}"
    "H301-HM-ACTIVE: ${number}, target ${number}"
    "H301-T: ${number}, target 38[.]500000"
    "CO2: ${number}, target 60[.]000000" # 1000 was asked for
    "values changed"
    "closed")
if(output MATCHES "no value|no answer")
    message(FATAL_ERROR "a channel gave nothing")
endif()
