# kavhost's libraries for Windows, which no package of the system contains: packaging/windows-libraries builds them once.
execute_process(COMMAND "${PROJECT_SOURCE_DIR}/packaging/windows-libraries"
    OUTPUT_VARIABLE built OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    packaging/sources.txt packaging/windows-libraries packaging/windows/CMakeLists.txt packaging/windows/project.cmake
    packaging/windows/toolchain.cmake packaging/windows/lame/CMakeLists.txt)

# A link, so that what CMake has found stays where it is when they are built anew.
set(KAV_WINDOWS_LIBRARIES "${CMAKE_BINARY_DIR}/windows_libraries")
file(CREATE_LINK "${built}" "${KAV_WINDOWS_LIBRARIES}" SYMBOLIC)
list(PREPEND CMAKE_FIND_ROOT_PATH "${KAV_WINDOWS_LIBRARIES}")
file(GLOB KAV_WINDOWS_DLLS "${KAV_WINDOWS_LIBRARIES}/bin/*.dll")

# kav_place_windows_libraries(<folder>): puts the DLLs where a program that needs them finds them.
function(kav_place_windows_libraries folder)
    file(COPY ${KAV_WINDOWS_DLLS} DESTINATION "${folder}")
endfunction()
