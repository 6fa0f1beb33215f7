# What `cmake --install` puts where, and the packages that `cpack` makes of it: a .deb for the preset "release", a
# .zip and an installer for the preset "mingw".
#
# kavhost searches its own folder for the plug-in, its profile and the factory content. On Linux that is a separate
# folder with links: from the command in bin, and to the library where hosts search for it.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON) # "all" includes tests and benchmarks, which no package contains

set(content_folders "${CMAKE_BINARY_DIR}/content/Patches" "${CMAKE_BINARY_DIR}/content/Routings")
set(name ${KAV_PACKAGE})
# The guide is made by the target kav_guide, of the preset "release" for both packages.
set(guide "${KAV_PRODUCT} User Guide")
set(guide_files "${KAV_GUIDE_FOLDER}/${guide}.pdf" "${KAV_GUIDE_FOLDER}/${guide}.html")

if(WIN32)
    install(TARGETS KAVSorrelLimiter DESTINATION .)
    install(FILES CHANGELOG.md LICENSE DESTINATION .)
    install(CODE "
        execute_process(
            COMMAND \"${CMAKE_COMMAND}\" -E cat \"${PROJECT_SOURCE_DIR}/packaging/windows-readme.md\"
                \"${PROJECT_SOURCE_DIR}/README.md\"
            OUTPUT_FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/README.md\" COMMAND_ERROR_IS_FATAL ANY)")
    install(DIRECTORY docs DESTINATION . PATTERN guide EXCLUDE)
    install(FILES ${guide_files} DESTINATION . OPTIONAL)
    install(CODE "
        include(\"${PROJECT_SOURCE_DIR}/packaging/plain_links.cmake\")
        plain_links(\"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")")
    if(KAV_BUILD_TOOLS)
        install(TARGETS kavhost DESTINATION .)
        install(FILES "${CMAKE_BINARY_DIR}/KAVSorrelLimiter.json" DESTINATION .)
        install(DIRECTORY ${content_folders} DESTINATION content)
        install(PROGRAMS ${KAV_WINDOWS_DLLS} DESTINATION .)
        install(DIRECTORY "${KAV_WINDOWS_LIBRARIES}/licences" DESTINATION .)
    endif()
else()
    set(documents share/doc/${name})
    install(TARGETS KAVSorrelLimiter DESTINATION lib/vst)
    install(FILES README.md DESTINATION ${documents})
    install(FILES LICENSE DESTINATION ${documents} RENAME copyright)
    install(FILES packaging/lintian-overrides DESTINATION share/lintian/overrides RENAME ${name})
    install(DIRECTORY docs DESTINATION ${documents} PATTERN guide EXCLUDE)
    install(FILES ${guide_files} DESTINATION ${documents} OPTIONAL)
    install(CODE "
        include(\"${PROJECT_SOURCE_DIR}/packaging/plain_links.cmake\")
        plain_links(\"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${documents}\"
            LICENSE copyright CHANGELOG.md changelog.gz)")

    # install_compressed(<file> <place>): stores no name or date inside, so that equal sources give equal packages.
    function(install_compressed file place)
        get_filename_component(folder ${place} DIRECTORY)
        install(CODE "
            set(place \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${place}\")
            file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}\")
            execute_process(COMMAND gzip -9nc \"${file}\" OUTPUT_FILE \"\${place}\" COMMAND_ERROR_IS_FATAL ANY)")
    endfunction()
    install_compressed("${PROJECT_SOURCE_DIR}/CHANGELOG.md" ${documents}/changelog.gz)
    # What Debian's tools read; it names the version and leaves the changes to the file above. A version that has not been
    # released yet has the day on which it was last packaged.
    set(package_day 2026-11-22)
    set(release_type development) # "stable" once CHANGELOG.md has a date for the version
    execute_process(COMMAND date --utc --rfc-email "--date=${package_day} 12:00 UTC"
        OUTPUT_VARIABLE package_date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    configure_file(packaging/changelog.Debian.in changelog.Debian @ONLY)
    install_compressed("${CMAKE_BINARY_DIR}/changelog.Debian" ${documents}/changelog.Debian.gz)

    if(KAV_BUILD_TOOLS)
        set(own lib/${name})
        install(TARGETS kavhost DESTINATION ${own})
        install(FILES "${CMAKE_BINARY_DIR}/KAVSorrelLimiter.json" DESTINATION ${own})
        install(DIRECTORY ${content_folders} DESTINATION ${own}/content)
        install(CODE "
            set(prefix \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
            file(MAKE_DIRECTORY \"\${prefix}/bin\")
            file(CREATE_LINK ../${own}/kavhost \"\${prefix}/bin/kavhost\" SYMBOLIC)
            file(CREATE_LINK ../vst/KAVSorrelLimiter.so \"\${prefix}/${own}/KAVSorrelLimiter.so\" SYMBOLIC)
            if(EXISTS \"\${prefix}/${documents}/${guide}.pdf\")
                file(CREATE_LINK \"../../${documents}/${guide}.pdf\" \"\${prefix}/${own}/${guide}.pdf\" SYMBOLIC)
            endif()")
        install_compressed("${CMAKE_BINARY_DIR}/kavhost.1" share/man/man1/kavhost.1.gz)
        install(FILES "${CMAKE_BINARY_DIR}/completion/kavhost" DESTINATION share/bash-completion/completions)
        install(FILES "${CMAKE_BINARY_DIR}/completion/_kavhost" DESTINATION share/zsh/vendor-completions)

        # What desktops and their software centres show of kavhost.
        set(component invalid.kavelin.sorrel_limiter)
        set(audio_types # that kavhost reads
            audio/x-wav audio/flac audio/x-aiff audio/ogg audio/x-vorbis+ogg audio/x-opus+ogg audio/mpeg)
        list(TRANSFORM audio_types REPLACE "(.+)" "    <mediatype>\\1</mediatype>" OUTPUT_VARIABLE mediatypes)
        list(JOIN mediatypes "\n" mediatypes)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS LICENSE)
        file(STRINGS LICENSE licences REGEX "^SPDX-License-Identifier: ")
        list(TRANSFORM licences REPLACE "^SPDX-License-Identifier: " "")
        list(REMOVE_DUPLICATES licences)
        list(JOIN licences " AND " licences)
        configure_file(packaging/kavhost.desktop.in kavhost.desktop @ONLY)
        configure_file(packaging/metainfo.xml.in ${component}.metainfo.xml @ONLY)
        install(FILES "${CMAKE_BINARY_DIR}/kavhost.desktop" DESTINATION share/applications)
        install(FILES "${CMAKE_BINARY_DIR}/${component}.metainfo.xml" DESTINATION share/metainfo)
        foreach(side IN ITEMS 16 24 32 48 64 128 256)
            install(FILES packaging/icons/${side}.png
                DESTINATION share/icons/hicolor/${side}x${side}/apps RENAME ${name}.png)
        endforeach()
    endif()
endif()

set(CPACK_PACKAGE_NAME ${name})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "${KAV_VENDOR}")
set(CPACK_PACKAGE_CONTACT "${KAV_VENDOR} <support@kavelin.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "look-ahead brick-wall limiter as a VST 2.4 plug-in")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "A limiter for up to 16 channels in four groups, with patches, routings and\n\
macros, for hosts that load VST 2.4 plug-ins. It also contains kavhost, which\n\
runs sound files through the plug-in and measures the result.")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME "${name}-${PROJECT_VERSION}-windows")
    set(CPACK_KAV_PRODUCT "${KAV_PRODUCT}")
    set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/packaging/installer/installer.cmake")
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_RELEASE 0kavelin1) # below a package that Debian itself may make
    set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/packaging/plain_package.cmake")
    set(CPACK_DEBIAN_PACKAGE_SECTION sound)
    set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    # Loaded if present: for the clipboard and the description of the screen; for the editor's window, pictures, text,
    # keys and pointers; for the desktop's dialogs; for the sound of kavhost.
    set(recommended
        libxcb1 libxcb-randr0 libxcb-shm0 libxcb-xkb1 libxcb-cursor0
        libxkbcommon0 libxkbcommon-x11-0
        libpng16-16 libpixman-1-0 libfreetype6 libfontconfig1 libegl1 libopengl0 libdbus-1-3 libsdl2-2.0-0)
    list(JOIN recommended ", " CPACK_DEBIAN_PACKAGE_RECOMMENDS)
    set(CPACK_DEBIAN_PACKAGE_SUGGESTS xvfb) # for pictures of editors where there is no display
endif()
include(CPack)
