# The Debian package, built with `cpack -G DEB` in the build folder (see
# scripts/package.sh). Libraries the binaries link are found by
# dpkg-shlibdeps; what Qt loads as plugins at run time is invisible to it
# and so named here.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME valtrona)
set(CPACK_PACKAGE_VENDOR "Valtrona-Entwickler")
set(CPACK_PACKAGE_CONTACT "Valtrona-Entwickler <valtrona@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "batch image resizer with a German user interface")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The summary above is the first line of the Description field.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Valtrona shrinks hundreds of camera photos at once, for mail, the web or the
archive: collect the images, choose a resize rule, JPEG, PNG, WebP or AVIF
and a target folder, and watch the run. Photos come out upright, as their
EXIF data says they are to be shown. Every output is written under a temporary name and
renamed into place, so a stop never leaves a half-written image.

The package holds the window program valtrona and the command line
valtrona-cli. The user interface, the help and the man page are German.")

# Plugins: Qt's platform plugins (the window cannot open without them) and
# Qt's German translations, which the window loads for its standard dialogs.
if(VALTRONA_GUI)
    set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, qt6-translations-l10n")
endif()

include(CPack)
