# What `cmake --install` lays down, so that a host finds the libraries with find_package(qrv CONFIG) or
# with pkg-config. Nothing below holds an absolute path: the installed tree may be moved as a whole.
#
# A project that takes us in as a sub-folder installs what it likes; ours is off there unless it asks.
option(QRV_INSTALL "Install the libraries, their headers and their package files" ${PROJECT_IS_TOP_LEVEL})
if(NOT QRV_INSTALL)
    return()
endif()

include(CMakePackageConfigHelpers)

set(qrv_libraries qrv_common)
set(qrv_pc_libraries "-lqrv-common")
set(qrv_pc_requires "Qt5Core")
if(TARGET qrv_engine_shared)
    list(APPEND qrv_libraries qrv_engine_shared)
endif()
set(qrv_platform_is_external OFF)
if(QRV_PLATFORM STREQUAL "bundled")
    list(APPEND qrv_libraries qrv_platform)
    string(APPEND qrv_pc_libraries " -lqrv-platform")
else()
    string(APPEND qrv_pc_requires " qrv-platform")
    set(qrv_platform_is_external ON)
endif()
set(qrv_private_libraries)
if(TARGET qrv_sys)
    list(APPEND qrv_private_libraries qrv_sys)
endif()

# The libraries find each other, and the program finds them, wherever the tree stands; and just so in the build
# tree. With a run path of its own there, CMake would end it with an empty entry, which stands for the current folder:
# a library that somebody put among drawings would be taken for one of the system's.
file(RELATIVE_PATH qrv_libraries_from_program ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(qrv_built_programs ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_BINDIR})
set_target_properties(${qrv_libraries} ${qrv_private_libraries} PROPERTIES
    INSTALL_RPATH "$ORIGIN"
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH_USE_LINK_PATH ${qrv_platform_is_external}
    LIBRARY_OUTPUT_DIRECTORY ${qrv_built_programs}/${qrv_libraries_from_program})
install(TARGETS ${qrv_libraries}
    EXPORT qrv-targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qrv)
# Nobody builds against these: they are there for the libraries and the program.
if(qrv_private_libraries)
    install(TARGETS ${qrv_private_libraries}
        EXPORT qrv-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_SKIP)
endif()

if(TARGET qrv_cli)
    set_target_properties(qrv_cli PROPERTIES
        INSTALL_RPATH "$ORIGIN/${qrv_libraries_from_program}"
        BUILD_WITH_INSTALL_RPATH ON
        INSTALL_RPATH_USE_LINK_PATH ${qrv_platform_is_external}
        RUNTIME_OUTPUT_DIRECTORY ${qrv_built_programs})
    install(TARGETS qrv_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    # Manual pages and the completion of the shells are printed by the program itself.
    install(CODE "set(program \"$<TARGET_FILE:qrv_cli>\")
set(data \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}\")
set(pages \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man1\")")
    install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/InstallTexts.cmake)
endif()
# Hosts use them as well, for the library's messages.
foreach(language IN LISTS QRV_LANGUAGES)
    install(FILES ${QRV_CATALOGUE_FOLDER}/${language}/LC_MESSAGES/qrv.mo
        DESTINATION ${CMAKE_INSTALL_LOCALEDIR}/${language}/LC_MESSAGES)
endforeach()

set(qrv_package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/qrv)
install(EXPORT qrv-targets NAMESPACE qrv:: DESTINATION ${qrv_package_folder})
configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/qrv-config.cmake.in ${PROJECT_BINARY_DIR}/qrv-config.cmake
    INSTALL_DESTINATION ${qrv_package_folder}
    NO_SET_AND_CHECK_MACRO)
# Below 1.0 a minor version may break its users.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qrv-config-version.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/qrv-config.cmake
    ${PROJECT_BINARY_DIR}/qrv-config-version.cmake
    DESTINATION ${qrv_package_folder})

file(RELATIVE_PATH qrv_prefix_from_pc
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" qrv_prefix_from_pc ${qrv_prefix_from_pc})
file(RELATIVE_PATH qrv_libraries_from_prefix ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH qrv_headers_from_prefix ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
set(qrv_pc_files qrv)
if(TARGET qrv_engine_shared)
    list(APPEND qrv_pc_files qrv-engine)
endif()
foreach(name IN LISTS qrv_pc_files)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
