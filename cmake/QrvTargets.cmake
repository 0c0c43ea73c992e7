# What every target of ours has in common. All of it is private: a consumer of the installed
# package sees none of our warnings, definitions or visibility settings.

add_library(qrv_private_options INTERFACE)
# g++ 12 sees overlapping copies in optimised sums of std::string, where there are none.
# clang refuses every list of rows of the history, which are values that may be derived from.
target_compile_options(qrv_private_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<CXX_COMPILER_ID:Clang>:-Wno-delete-non-abstract-non-virtual-dtor>
    $<$<BOOL:${QRV_WARNINGS_AS_ERRORS}>:-Werror>)

# The sanitizers keep tables of everything that they check. In a program that can be loaded anywhere the loader fills in
# each pointer of them, a million and a half, at each of the thousands of starts in the tests.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
endif()

# Settings of one target: our warnings, C++20 without extensions, everything hidden unless exported.
function(qrv_configure target)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:qrv_private_options>)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# Compiling under the sanitizers takes most of a test run there; the tests' own code and that of the program
# need no speed.
option(QRV_OPTIMISE_TESTS "Compile tests and program as the build type says, and not without optimisation" ON)
function(qrv_compile_quickly target)
    if(NOT QRV_OPTIMISE_TESTS)
        target_compile_options(${target} PRIVATE -O0)
    endif()
endfunction()

# Many small sources spend a third of their compile time in the same headers of the standard library. They still include
# what they use: the presets release and tidy compile each source without what is precompiled here.
function(qrv_precompile target)
    target_precompile_headers(${target} PRIVATE
        <algorithm> <filesystem> <functional> <map> <memory> <optional> <sstream> <string> <utility> <vector>)
endfunction()

# A shared library of ours: its headers are included from the project's root and are installed
# below include/qrv in the same layout. Of one whose name ends in "_shared" our own targets link another form.
function(qrv_configure_library target)
    qrv_configure(${target})
    string(REGEX REPLACE "^qrv_|_shared$" "" short_name ${target})
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/qrv>)
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME qrv-${short_name}
        EXPORT_NAME ${short_name}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    if(NOT TARGET qrv::${short_name})
        add_library(qrv::${short_name} ALIAS ${target})
    endif()
endfunction()

# Of the library only the names are seen that the version script `map` lists.
include(CheckLinkerFlag)
function(qrv_export_only target map)
    set(map ${CMAKE_CURRENT_SOURCE_DIR}/${map})
    check_linker_flag(CXX "LINKER:--version-script=${map}" QRV_LINKER_TAKES_VERSION_SCRIPTS)
    if(QRV_LINKER_TAKES_VERSION_SCRIPTS)
        target_link_options(${target} PRIVATE LINKER:--version-script=${map})
        set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
    endif()
endfunction()

# The base library of wxWidgets, whose find module sets variables but makes no target.
function(qrv_add_wx_target)
    add_library(qrv_wx_base INTERFACE)
    target_include_directories(qrv_wx_base SYSTEM INTERFACE ${wxWidgets_INCLUDE_DIRS})
    target_compile_definitions(qrv_wx_base INTERFACE ${wxWidgets_DEFINITIONS} wxUSE_GUI=0)
    target_link_directories(qrv_wx_base INTERFACE ${wxWidgets_LIBRARY_DIRS})
    target_link_libraries(qrv_wx_base INTERFACE ${wxWidgets_LIBRARIES})
endfunction()
