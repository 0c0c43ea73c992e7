# Compiles SOURCES, names of files in FOLDER, to PROGRAM with COMPILER, FLAGS and nothing else but what
# pkg-config answers of PACKAGE.
set(ENV{PKG_CONFIG_PATH} ${PC_FOLDER})
foreach(question --modversion --cflags --libs)
    execute_process(COMMAND ${PKG_CONFIG} ${question} ${PACKAGE}
        OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(answer${question} UNIX_COMMAND "${answer}")
endforeach()
if(NOT "${answer--modversion}" STREQUAL "${VERSION}")
    message(FATAL_ERROR "pkg-config says version ${answer--modversion}, not ${VERSION}")
endif()
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
separate_arguments(sources UNIX_COMMAND "${SOURCES}")
list(TRANSFORM sources PREPEND ${FOLDER}/)
execute_process(
    COMMAND ${COMPILER} ${flags} ${answer--cflags} ${sources} -o ${PROGRAM} ${answer--libs}
    COMMAND_ERROR_IS_FATAL ANY)
