# What cpack makes of an installation: Debian packages of the library, of what programs are built
# with, and of the tool; for Windows one archive with all of it, which works where it is unpacked.

set(CPACK_PACKAGE_CONTACT "The zvwt developers <zvwt@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package begins its description with one
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_GENERATOR DEB)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
endif()

set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
"work tables: typed rows on disk for a while
A work table is a temporary table of typed rows, kept in files: written
about as fast as memory copies allow, read forwards, backwards, in ranges or
by some columns, sorted, and deleted when it is no longer needed.
.
This package has the shared library.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"work tables: headers and documentation
A work table is a temporary table of typed rows, kept in files.
.
This package has what C++20 and C programs that use the library are built
with: headers, packages for CMake and pkg-config, and the guide. A module for
Python lies in /usr/share/zvwt/python.")
set(CPACK_COMPONENT_TOOL_DESCRIPTION
"work tables: the command line tool
A work table is a temporary table of typed rows, kept in files.
.
This package has a tool that imports and exports tables as CSV, and shows,
sorts, copies, checks and deletes them.")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SOURCE zvwt)
set(zvwt_library_package libzvwt${PROJECT_VERSION_MAJOR})

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${zvwt_library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
# Programs need the library that they were built with, or a later one of the same interface.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzvwt-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${zvwt_library_package} (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME zvwt)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION database)
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${zvwt_library_package} (>= ${PROJECT_VERSION})")
# The tool's own library, which no package that is installed here need have.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})

include(CPack)
