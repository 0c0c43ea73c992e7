# Copies an example host, the folder HOST with the program NAME, to a temporary folder outside every source tree, builds it
# there with nothing but PREFIX to find the library in, and hands it to RUN_HOST.
if(DEFINED ENV{TMPDIR})
    set(temporary $ENV{TMPDIR})
else()
    set(temporary /tmp)
endif()
# The same name at each run, so that what a failed run leaves for a look is gone after the next one.
string(MD5 name ${PREFIX})
set(folder ${temporary}/qrv-${NAME}-${name})
file(REMOVE_RECURSE ${folder})
file(COPY ${HOST}/ DESTINATION ${folder}/host)

execute_process(COMMAND ${CMAKE_COMMAND} -S ${folder}/host -B ${folder}/build
    -D CMAKE_PREFIX_PATH=${PREFIX} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${folder}/build COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -D PROGRAM=${folder}/build/${NAME}
    -D HOST=${folder}/host -D QRV=${PREFIX}/${PROGRAMS}/qrv -P ${RUN_HOST} COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${folder})
