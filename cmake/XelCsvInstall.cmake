# What is installed: the public headers, the libraries, a CMake package and a pkg-config file. All of it may be moved to
# another prefix afterwards.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(FILES ${xelcsvPublicHeaders} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/xelcsv)

set(xelcsvPackageDir ${CMAKE_INSTALL_LIBDIR}/cmake/xelcsv)
foreach(kind static shared)
  if(TARGET xelcsv_${kind})
    install(TARGETS xelcsv_${kind} EXPORT xelcsv_${kind} INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(EXPORT xelcsv_${kind} DESTINATION ${xelcsvPackageDir} NAMESPACE xelcsv:: FILE xelcsv_${kind}.cmake)
  endif()
endforeach()

if(TARGET xelcsv-check)
  install(TARGETS xelcsv-check EXPORT xelcsv_check INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(EXPORT xelcsv_check DESTINATION ${xelcsvPackageDir} NAMESPACE xelcsv:: FILE xelcsv_check.cmake)
endif()

configure_package_config_file(cmake/xelcsvConfig.cmake.in ${PROJECT_BINARY_DIR}/xelcsvConfig.cmake
  INSTALL_DESTINATION ${xelcsvPackageDir} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
# Before version 1 a new minor version may change what exists.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(xelcsvCompatibility SameMinorVersion)
else()
  set(xelcsvCompatibility SameMajorVersion)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/xelcsvConfigVersion.cmake COMPATIBILITY ${xelcsvCompatibility})
install(FILES ${PROJECT_BINARY_DIR}/xelcsvConfig.cmake ${PROJECT_BINARY_DIR}/xelcsvConfigVersion.cmake
  DESTINATION ${xelcsvPackageDir})

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
install(FILES ${PROJECT_BINARY_DIR}/xelcsv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
