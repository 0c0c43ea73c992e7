# Runs PROGRAM on a small folder of its own and compares all that it prints.
set(folder ${PROGRAM}-folder)
file(REMOVE_RECURSE ${folder})
file(WRITE ${folder}/plan.dxf "0\nEOF\n")
file(WRITE ${folder}/sheets/a.dxf "0\nEOF\n")

if(DEFINED LIBRARIES)
    set(ENV{LD_LIBRARY_PATH} ${LIBRARIES})
endif()
execute_process(COMMAND ${PROGRAM} ${folder}
    RESULT_VARIABLE status OUTPUT_VARIABLE printed ERROR_VARIABLE complaints)

set(expected "written: yes
branch: master
plan.dxf
sheets/a.dxf
.qrv/properties/ignore
")
if(NOT status EQUAL 0 OR NOT printed STREQUAL expected OR NOT complaints STREQUAL "")
    message(FATAL_ERROR
        "status ${status}\nprinted:\n${printed}\nexpected:\n${expected}\ncomplaints:\n${complaints}")
endif()
if(NOT EXISTS ${folder}/.qrv/qrv.state)
    message(FATAL_ERROR "there is no state file")
endif()
