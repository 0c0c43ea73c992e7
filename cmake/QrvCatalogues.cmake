# The message catalogues: po/<language>.po becomes locale/<language>/LC_MESSAGES/qrv.mo in the build tree,
# where the program finds it as it finds the installed one, in a place relative to itself.
find_program(QRV_MSGFMT msgfmt DOC "The compiler of message catalogues, of gettext" REQUIRED)

set(qrv_languages_file ${PROJECT_SOURCE_DIR}/po/LINGUAS)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${qrv_languages_file})
file(STRINGS ${qrv_languages_file} QRV_LANGUAGES REGEX "^[^#]")
set(QRV_CATALOGUE_FOLDER ${PROJECT_BINARY_DIR}/locale)

set(qrv_catalogues)
foreach(language IN LISTS QRV_LANGUAGES)
    set(source ${PROJECT_SOURCE_DIR}/po/${language}.po)
    set(folder ${QRV_CATALOGUE_FOLDER}/${language}/LC_MESSAGES)
    add_custom_command(OUTPUT ${folder}/qrv.mo
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        COMMAND ${QRV_MSGFMT} --check-format --output-file=${folder}/qrv.mo ${source}
        DEPENDS ${source}
        COMMENT "Compiling the message catalogue ${language}"
        VERBATIM)
    list(APPEND qrv_catalogues ${folder}/qrv.mo)
endforeach()
add_custom_target(qrv_catalogues ALL DEPENDS ${qrv_catalogues})

# From the installed program to the installed catalogues.
file(RELATIVE_PATH QRV_CATALOGUES_FROM_PROGRAM
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LOCALEDIR})
