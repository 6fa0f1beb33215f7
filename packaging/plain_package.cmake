# Run when a .deb has been made. Seeing a library below /usr/lib, cpack gives the package scripts that call ldconfig; but
# a plug-in is loaded by its path, and the linker's list has nothing to do with it.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(tree "${package}.tree")
    foreach(step
            "dpkg-deb|--raw-extract|${package}|${tree}"
            "rm|${tree}/DEBIAN/postinst|${tree}/DEBIAN/postrm"
            "dpkg-deb|--root-owner-group|--build|${tree}|${package}"
            "rm|-r|${tree}")
        string(REPLACE "|" ";" command "${step}")
        execute_process(COMMAND ${command} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
endforeach()
