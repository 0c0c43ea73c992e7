# Runs the engine host PROGRAM on a new folder, compares all that it prints with expected/engine_host.txt, and lets the
# program QRV go on with the folder.
set(folder ${PROGRAM}-run)
file(REMOVE_RECURSE ${folder})
set(ENV{QRV_CONFIG_DIR} ${folder}-settings)
set(ENV{LC_ALL} C.UTF-8)

execute_process(COMMAND ${PROGRAM} ${folder} ada
    RESULT_VARIABLE status OUTPUT_VARIABLE printed ERROR_VARIABLE complaints)
file(READ ${CMAKE_CURRENT_LIST_DIR}/expected/engine_host.txt expected)
if(NOT status EQUAL 0 OR NOT printed STREQUAL expected OR NOT complaints STREQUAL "")
    message(FATAL_ERROR "status ${status}\nprinted:\n${printed}\nexpected:\n${expected}\ncomplaints:\n${complaints}")
endif()

# Fails when the program does, or prints something else than matches `pattern`.
function(go_on pattern)
    execute_process(COMMAND ${QRV} -C ${folder} ${ARGN}
        OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
    if(NOT printed MATCHES "${pattern}")
        message(FATAL_ERROR "qrv ${ARGN} prints:\n${printed}\nwhich does not match ${pattern}")
    endif()
endfunction()
go_on("" verify)
go_on("Nothing has changed" status)
file(WRITE ${folder}/plan.txt "Ground floor, with a shed\n")
go_on("modified  plan.txt" add plan.txt)
go_on("on master: Add a shed" commit --author ben -m "Add a shed")
go_on("Add a shed.*Merge.*As received" log)
go_on("variant" branch)

execute_process(COMMAND ${PROGRAM} ${folder}
    RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE complaints)
if(NOT status EQUAL 2)
    message(FATAL_ERROR "status ${status} without an author: ${complaints}")
endif()
