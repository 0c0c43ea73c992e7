# Runs the example host PROGRAM on a copy of the samples in HOST, its folder, and compares all
# that it prints with the files in expected/, and what it leaves behind.
set(folder ${PROGRAM}-run)
file(REMOVE_RECURSE ${folder})
file(COPY ${HOST}/sample/ DESTINATION ${folder})
if(DEFINED LIBRARIES)
    set(ENV{LD_LIBRARY_PATH} ${LIBRARIES})
endif()

function(expect_text what text expected)
    if(NOT text STREQUAL expected)
        message(FATAL_ERROR "${what}:\n${text}\nexpected:\n${expected}")
    endif()
endfunction()

function(expect_file name expected)
    file(READ ${folder}/${name} text)
    expect_text(${name} "${text}" "${expected}")
endfunction()

function(expect_run expected_name expected_status expected_complaints)
    execute_process(COMMAND ${PROGRAM} ${ARGN} WORKING_DIRECTORY ${folder}
        RESULT_VARIABLE status OUTPUT_VARIABLE printed ERROR_VARIABLE complaints)
    file(READ ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/expected/${expected_name}.txt expected)
    expect_text("${expected_name}, complaints" "${complaints}" "${expected_complaints}")
    expect_text("${expected_name}, printed" "${printed}" "${expected}")
    expect_text("${expected_name}, status" "${status}" ${expected_status})
endfunction()

expect_run(first 0 "" project plan inbox settings)
expect_file(project/plan.txt "Ground floor: workshop, office and store.\n")
expect_file(project/notes/doors.txt "Two doors.\n")
expect_file(project/notes/windows.txt "Sills at 900.\n")
file(READ ${folder}/project/.qrv/qrv.log log)
if(NOT log MATCHES "^[A-Z][^\n]* - made commit 1\n$")
    message(FATAL_ERROR "the log:\n${log}")
endif()
file(READ ${folder}/project/.qrv/qrv.state state)
if(state MATCHES staged_files)
    message(FATAL_ERROR "the state:\n${state}")
endif()

# A file that only the commit puts into the index, and one that the ignore rules hide: what was sent under its
# name must not replace it.
file(WRITE ${folder}/other/a.txt "a\n")
file(WRITE ${folder}/other/a.bak "ours\n")
file(WRITE ${folder}/other_inbox/a.bak "theirs\n")
expect_run(hidden 0 "" other a.txt other_inbox other_settings)
expect_file(other/a.bak "ours\n")
file(READ ${folder}/other/.qrv/qrv.state state)
if(NOT state MATCHES "\"modified\" : false[^}]*}[^}]*\"path\" : \"a.txt\"")
    message(FATAL_ERROR "the state:\n${state}")
endif()

# Somebody works on; the colleague sends nothing but the same doors and windows again.
file(WRITE ${folder}/project/plan.txt "Ground floor: workshop, office and shed.\n")
file(REMOVE ${folder}/project/notes/windows.txt ${folder}/inbox/plan.txt)
expect_run(second 0 "" project plan inbox settings)
expect_file(project/plan.txt "Ground floor: workshop, office and shed.\n")
expect_file(project/notes/doors.txt "Two doors.\n")

# A name that fits no changed file, one that is no expression, and a storage that cannot be written, where
# the file was staged already: the state is as before.
file(READ ${folder}/project/.qrv/qrv.state state)
expect_run(nothing_staged 1 "No changed file is named 'plan'\n" project plan inbox settings)
expect_run(nothing_staged 1 "Mismatched '(' and ')' in regular expression\n"
    project "(" inbox settings)
expect_file(project/.qrv/qrv.state "${state}")
set(objects ${folder}/project/.qrv/objects)
file(REMOVE_RECURSE ${objects})
file(WRITE ${objects} "A file stands in the way.\n")
expect_run(not_stored 1 "The folder '${objects}' cannot be made\n" project doors inbox settings)
expect_file(project/.qrv/qrv.state "${state}")

# What a broken disk leaves of a state is neither read nor replaced.
file(WRITE ${folder}/project/.qrv/qrv.state "{ \"head")
expect_run(nothing 1 "a JSON string has no end\n" project plan inbox settings)
expect_file(project/.qrv/qrv.state "{ \"head")
expect_run(nothing 2 "Usage: example_host PROJECT FILE INBOX SETTINGS\n" project plan inbox)
