# Run when the .zip for Windows has been made: makes an installer of the same files.
set(tree "${CPACK_TEMPORARY_DIRECTORY}")
set(list "${CPACK_TOPLEVEL_DIRECTORY}/installed-files.txt")
file(GLOB_RECURSE files LIST_DIRECTORIES true RELATIVE "${tree}" "${tree}/*")
list(APPEND files installed-files.txt)
list(SORT files ORDER DESCENDING) # a folder after what it contains
string(REPLACE "/" "\\" files "${files}")
list(JOIN files "\r\n" lines)
if(lines MATCHES "[^\r\n -~]")
    message(FATAL_ERROR "the installer can't remove a file whose name isn't ASCII:\n${lines}")
endif()
file(WRITE "${list}" "${lines}\r\n")
execute_process(
    COMMAND makensis -V2 -WX
        "-DVENDOR=${CPACK_PACKAGE_VENDOR}"
        "-DPRODUCT=${CPACK_KAV_PRODUCT}"
        "-DVERSION=${CPACK_PACKAGE_VERSION}"
        "-DTREE=${tree}"
        "-DLIST=${list}"
        "-DRESULT=${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}.exe"
        "${CMAKE_CURRENT_LIST_DIR}/installer.nsi"
    COMMAND_ERROR_IS_FATAL ANY)
