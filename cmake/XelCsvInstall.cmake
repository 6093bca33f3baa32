# What is installed. All of it may be moved to another prefix afterwards. In components, each of which
# cmake --install FOLDER --component NAME installs alone:
#
#   runtime        the shared library, for programs that are linked with it
#   development    headers, static libraries, CMake package, pkg-config file; needs runtime
#   tools          the program xelcsv, its man page and its completions
#   documentation  the documents and the example programs
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(FILES ${xelcsvPublicHeaders} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/xelcsv COMPONENT development)

set(xelcsvPackageDir ${CMAKE_INSTALL_LIBDIR}/cmake/xelcsv)
foreach(kind static shared)
  if(TARGET xelcsv_${kind})
    install(TARGETS xelcsv_${kind} EXPORT xelcsv_${kind}
      RUNTIME COMPONENT runtime
      LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
      ARCHIVE COMPONENT development
      INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(EXPORT xelcsv_${kind} DESTINATION ${xelcsvPackageDir} NAMESPACE xelcsv:: FILE xelcsv_${kind}.cmake
      COMPONENT development)
  endif()
endforeach()

if(TARGET xelcsv-check)
  install(TARGETS xelcsv-check EXPORT xelcsv_check
    ARCHIVE COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(EXPORT xelcsv_check DESTINATION ${xelcsvPackageDir} NAMESPACE xelcsv:: FILE xelcsv_check.cmake
    COMPONENT development)
endif()

configure_package_config_file(cmake/xelcsvConfig.cmake.in ${PROJECT_BINARY_DIR}/xelcsvConfig.cmake
  INSTALL_DESTINATION ${xelcsvPackageDir} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/xelcsvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/xelcsvConfig.cmake ${PROJECT_BINARY_DIR}/xelcsvConfigVersion.cmake
  DESTINATION ${xelcsvPackageDir} COMPONENT development)

# The pkg-config file finds its prefix from where it lies.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} OR IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(pcPrefix ${CMAKE_INSTALL_PREFIX})
  set(pcLibdir ${CMAKE_INSTALL_FULL_LIBDIR})
  set(pcIncludedir ${CMAKE_INSTALL_FULL_INCLUDEDIR})
else()
  file(RELATIVE_PATH pcUp /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" pcUp ${pcUp})
  set(pcPrefix "\${pcfiledir}/${pcUp}")
  set(pcLibdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(pcIncludedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(cmake/xelcsv.pc.in ${PROJECT_BINARY_DIR}/xelcsv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/xelcsv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# In folders as here, so that the documents' links to each other lead somewhere.
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
  FILES_MATCHING PATTERN *.md PATTERN examples/*.cpp PATTERN examples/data/* PATTERN examples/expected/*)
if(XELCSV_PAGES)
  if(NOT EXISTS ${XELCSV_PAGES}/index.html)
    message(FATAL_ERROR "There are no pages in ${XELCSV_PAGES}; ./dev docs makes them in build/docs/html")
  endif()
  install(DIRECTORY ${XELCSV_PAGES}/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/html COMPONENT documentation)
endif()
