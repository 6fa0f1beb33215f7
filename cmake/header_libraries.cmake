# Header-only libraries are the same for every system. But in a cross build their folder, /usr/include, would also
# provide the headers of this system's C library. So links to just those libraries make up a separate folder.

# kav_header_libraries(<target> <folder>...): an interface target with these folders of /usr/include on its path.
function(kav_header_libraries target)
    set(headers "${CMAKE_BINARY_DIR}/header_libraries/${target}")
    file(MAKE_DIRECTORY "${headers}")
    foreach(library IN LISTS ARGN)
        if(NOT IS_DIRECTORY "/usr/include/${library}")
            message(FATAL_ERROR "${target}: there are no headers in /usr/include/${library}")
        endif()
        get_filename_component(link "${library}" NAME)
        file(CREATE_LINK "/usr/include/${library}" "${headers}/${link}" SYMBOLIC)
    endforeach()
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE "${headers}")
endfunction()
