# Debian packages of the components: cpack in the build folder writes them into packages/. The names of the packages and
# where files go are Debian's rules, so this is for a build whose prefix is /usr.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr" OR NOT XELCSV_INSTALL OR NOT XELCSV_BUILD_TOOLS
    OR NOT XELCSV_PAGES OR NOT TARGET xelcsv_static OR NOT TARGET xelcsv_shared)
  message(FATAL_ERROR "Debian packages hold everything, under /usr: CMAKE_INSTALL_PREFIX=/usr, XELCSV_INSTALL, "
    "XELCSV_BUILD_STATIC, XELCSV_BUILD_SHARED, XELCSV_BUILD_TOOLS, XELCSV_PAGES")
endif()

# The package of the library carries the number of its SONAME, so that two of them can be installed side by side.
set(xelcsvLibraryPackage libxelcsv${PROJECT_VERSION_MAJOR})
set(xelcsvVersion ${PROJECT_VERSION}-1)
set(XELCSV_MAINTAINER "the authors of xelcsv <xelcsv@xelcsv.invalid>" CACHE STRING "Who the Debian packages are from")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME xelcsv)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${XELCSV_MAINTAINER})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime development tools documentation)
set(CPACK_STRIP_FILES ON)
# Debian wants folders that everybody can read, whoever built them.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

# xelcsv_describe_package(COMPONENT NAME SECTION SUMMARY TEXT): the package of a component, with what Debian wants every
# package to hold. The summary is the first line of the description as long as CPack has none that is for all.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
string(TIMESTAMP xelcsvDate "%a, %d %b %Y %H:%M:%S +0000" UTC)
find_program(GZIP_PROGRAM gzip REQUIRED)
function(xelcsv_describe_package component name section summary text)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)

  set(made ${PROJECT_BINARY_DIR}/debian/${name})
  file(WRITE ${made}/changelog.Debian "xelcsv (${xelcsvVersion}) unstable; urgency=medium

  * What is new for users stands in the CHANGELOG.md of libxelcsv-doc.

 -- ${XELCSV_MAINTAINER}  ${xelcsvDate}
")
  execute_process(COMMAND ${GZIP_PROGRAM} -9nf ${made}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
  install(FILES cmake/debian/copyright ${made}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endfunction()

xelcsv_describe_package(runtime ${xelcsvLibraryPackage} libs "reader library for CSV data files of many tables"
  "This library reads data files of one or many tables and finds lines by
their keys. Programs that are linked with it need this package.")
xelcsv_describe_package(development libxelcsv-dev libdevel "reader library for CSV data files - development"
  "This package holds the headers, the static libraries, the CMake package
and the pkg-config file of the library.")
xelcsv_describe_package(tools xelcsv utils "looks into, checks and converts CSV data files of many tables"
  "This program shows the tables, columns and lines of a data file, tells
what is wrong with it, and converts it to and from other formats.")
xelcsv_describe_package(documentation libxelcsv-doc doc "reader library for CSV data files - documentation"
  "This package holds the guide, the file format, the messages, example\nprograms, and all of it with the public headers as HTML pages.")

# Packages of programs that are linked with the library learn here which package they need.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${xelcsvLibraryPackage} (= ${xelcsvVersion})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS libxelcsv-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

include(CPack)
