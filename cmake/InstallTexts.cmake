# Run by the installation: writes what the program `program` prints of itself, in English, below the folders
# `data` (completion of the shells) and `pages` (manual pages).
function(qrv_print file)
    get_filename_component(folder ${file} DIRECTORY)
    file(MAKE_DIRECTORY ${folder})
    message(STATUS "Installing: ${file}")
    execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C LANGUAGE= ${program} ${ARGN}
        OUTPUT_FILE ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

qrv_print(${data}/bash-completion/completions/qrv completion bash)
qrv_print(${data}/zsh/site-functions/_qrv completion zsh)
qrv_print(${data}/fish/vendor_completions.d/qrv.fish completion fish)
qrv_print(${pages}/qrv.1 manual)
execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C LANGUAGE= ${program} manual --list
    OUTPUT_VARIABLE commands OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" commands "${commands}")
foreach(command IN LISTS commands)
    qrv_print(${pages}/qrv-${command}.1 manual ${command})
endforeach()
