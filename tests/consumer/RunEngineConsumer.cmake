# Makes a repository with the program QRV, and compares what CONSUMER says of its branches, and of a folder that is in
# no repository.
set(folder ${CONSUMER}-folder)
file(REMOVE_RECURSE ${folder})
file(WRITE ${folder}/project/plan.dxf "0\nEOF\n")
set(ENV{QRV_CONFIG_DIR} ${folder}/settings)
set(ENV{LC_ALL} C.UTF-8)
foreach(command "init" "add --all" "commit --author ada -m First" "branch side" "switch side")
    separate_arguments(arguments UNIX_COMMAND "${command}")
    execute_process(COMMAND ${QRV} -C ${folder}/project ${arguments}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()

if(DEFINED LIBRARIES)
    set(ENV{LD_LIBRARY_PATH} ${LIBRARIES})
endif()
function(expect_of place status printed complaint)
    execute_process(COMMAND ${CONSUMER} ${place}
        RESULT_VARIABLE is_status OUTPUT_VARIABLE is_printed ERROR_VARIABLE is_complaint)
    if(NOT is_status EQUAL status OR NOT is_printed STREQUAL printed OR NOT is_complaint MATCHES "${complaint}")
        message(FATAL_ERROR "status ${is_status}\nprinted:\n${is_printed}\ncomplaints:\n${is_complaint}")
    endif()
endfunction()
expect_of(${folder}/project 0 "  master 1 First\n* side 1 First\n" "^$")
expect_of(${folder}/settings 1 "" "is not in a repository")
