# Compiler launcher, warnings and sanitizer switches shared by every target of the project.

if(MARLIX_USE_CCACHE)
    find_program(MARLIX_CCACHE ccache)
    if(MARLIX_CCACHE)
        # Precompiled headers only hit the cache with these sloppiness settings; the base directory makes paths
        # relative, so that a second checkout or build folder reuses what the first one compiled.
        set(CMAKE_CXX_COMPILER_LAUNCHER
            ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
            CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} ${MARLIX_CCACHE})
    endif()
endif()

option(MARLIX_WARNINGS_AS_ERRORS "Treat compiler warnings of the project's own code as errors" OFF)

set(MARLIX_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")
if(MARLIX_SANITIZE)
    # vptr checks need RTTI of every Qt class, which the distribution libraries hide; the rest stays on.
    set(_marlix_san_flags -fsanitize=${MARLIX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    if(MARLIX_SANITIZE MATCHES "undefined")
        list(APPEND _marlix_san_flags -fno-sanitize=vptr)
    endif()
    add_compile_options(${_marlix_san_flags})
    add_link_options(${_marlix_san_flags})
    string(JOIN " " MARLIX_SANITIZE_FLAGS ${_marlix_san_flags})
endif()

# Warnings for the project's own targets only.
function(marlix_set_warnings target)
    if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wno-missing-field-initializers)
        # GCC 12's flow warnings misfire in optimised builds: on libstdc++'s own string copies (-Wrestrict,
        # -Wstringop-overflow) and on calls it devirtualises speculatively to an override the object never has
        # (-Warray-bounds). Later versions fixed both; on 12 they would only teach readers to skim warnings.
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
            target_compile_options(${target} PRIVATE -Wno-restrict -Wno-stringop-overflow -Wno-array-bounds)
        endif()
        if(MARLIX_WARNINGS_AS_ERRORS)
            target_compile_options(${target} PRIVATE -Werror)
        endif()
    endif()
endfunction()

# Precompiled Qt headers for a target: the few heavy headers that most files include.
function(marlix_precompile_qt target)
    if(MARLIX_USE_PCH)
        target_precompile_headers(${target} PRIVATE
            <QtCore/QObject> <QtCore/QString> <QtCore/QList> <QtCore/QVariant>
            <QtGui/QPainter> <QtGui/QColor> <QtGui/QImage>
            <QtWidgets/QWidget> <QtWidgets/QStyle> <QtWidgets/QStyleOption>
            <functional> <memory> <string> <vector>)
    endif()
endfunction()

# AUTOMOC in an existing Ninja build folder does not run again when a CONFIGURE_DEPENDS glob brings new headers (a
# merge adds a Q_OBJECT class): its step only watches the files it already knew, and the library then links without
# the new meta-objects. The globbed list is kept beside the target; when a configure finds it changed, the moc step's
# stamp is removed, so the next build runs that step and reads the new headers.
function(marlix_automoc_follows_sources target)
    list(JOIN ARGN "\n" listed)
    set(file "${CMAKE_CURRENT_BINARY_DIR}/${target}_sources.txt")
    set(previous "")
    if(EXISTS "${file}")
        file(READ "${file}" previous)
    endif()
    if(NOT previous STREQUAL listed)
        file(WRITE "${file}" "${listed}")
        file(REMOVE "${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/timestamp")
    endif()
endfunction()
