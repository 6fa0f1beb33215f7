# Compile options for our own code, as targets to link with: never global, never forced on a dependency.

add_library(kav_warnings INTERFACE)
target_compile_options(kav_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wcast-align -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wnull-dereference -Wformat=2 -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 wrongly warns of overlapping copies in the standard library's own strings (its bug 105651).
    target_compile_options(kav_warnings INTERFACE -Wduplicated-cond -Wlogical-op -Wno-restrict)
endif()

# For every object of the library: position independence, hidden names, and arithmetic that doesn't depend on the
# compiler's choices. Contraction is off so that plain code and vector code give the same bits; fused operations are
# written as intrinsics where they are wanted.
add_library(kav_codegen INTERFACE)
target_compile_features(kav_codegen INTERFACE cxx_std_20)
target_compile_options(kav_codegen INTERFACE -ffp-contract=off -fvisibility=hidden
    -fvisibility-inlines-hidden)

if(KAV_SANITIZE)
    # GCC 12 wrongly warns of uninitialised values in the instrumented code of the standard library's own regular
    # expressions; the other presets keep this warning.
    target_compile_options(kav_warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    add_compile_options(-fsanitize=${KAV_SANITIZE} -fno-omit-frame-pointer)
    add_compile_definitions(KAV_SANITIZED) # the compilers' own macros for it differ
    add_link_options(-fsanitize=${KAV_SANITIZE})
    if(KAV_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize-recover=undefined)
    endif()
endif()

# kav_harden(<target>): what Debian asks of its own packages. A copy beyond a buffer's end, where the compiler knows its
# size, ends the process instead of overwriting what follows it. Names are resolved when the file is loaded, so that no
# thread waits for the loader at a first call, and the table of their addresses is read-only from then on.
function(kav_harden target)
    if(WIN32 OR KAV_SANITIZE)
        return()
    endif()
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
    target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
endfunction()

# kav_library(<name> SOURCES ... HEADERS ... [LINK ...]): one static library for one folder of the product.
# LINK names the folders below it; these lines are the layer rule.
function(kav_library name)
    cmake_parse_arguments(arg "" "" "SOURCES;HEADERS;LINK" ${ARGN})
    # A header with a source is compiled by it before any other, of which a test takes care. Only those without one
    # have to be compiled by themselves to see that they are complete: a quarter of them, and a sixth of the build.
    set(covered)
    set(lone)
    foreach(header IN LISTS arg_HEADERS)
        string(REGEX REPLACE "\\.h$" ".cpp" source "${header}")
        if("${source}" IN_LIST arg_SOURCES)
            list(APPEND covered "${header}")
        else()
            list(APPEND lone "${header}")
        endif()
    endforeach()
    add_library(${name} STATIC)
    target_sources(${name}
        PRIVATE ${arg_SOURCES}
        PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${covered}
        PUBLIC FILE_SET lone TYPE HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${lone})
    target_link_libraries(${name} PUBLIC kav_codegen ${arg_LINK} PRIVATE kav_warnings)
    kav_harden(${name})
    set_target_properties(${name} PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        VERIFY_INTERFACE_HEADER_SETS ON
        INTERFACE_HEADER_SETS_TO_VERIFY lone)
endfunction()

# kav_alone(<source>...): sources that a unity build compiles alone, because their local names clash with a
# neighbour's.
function(kav_alone)
    set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
