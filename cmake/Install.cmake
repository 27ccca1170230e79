# What `cmake --install` puts under the prefix, and the .deb that cpack makes:
#   include/MxXmlLib/          the public headers (and the compiler's)
#   lib/libMxXmlLib.so.16.1    with SONAME libMxXmlLib.so.16; likewise the compiler library
#   bin/mx
#   lib/cmake/MxXmlLib/        MxXmlLibConfig.cmake, its version file, the targets
#                              MxXmlLib::MxXmlLib, MxXmlLib::MxSchemaCompiler, MxXmlLib::mx
#                              and the mx_generate function
#   lib/pkgconfig/mxxmllib.pc
include(CMakePackageConfigHelpers)

set(MX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/MxXmlLib)
install(TARGETS MxXmlLib EXPORT MxXmlLibTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${MX_INCLUDE_DIR}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/MxXmlLib)
set(mx_config_with_compiler FALSE)
if(TARGET MxSchemaCompiler)
  set(mx_config_with_compiler TRUE)
  install(TARGETS MxSchemaCompiler mx EXPORT MxXmlLibTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  foreach(folder model frontend dynamic cpp)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/compiler/${folder}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/MxXmlLib/${folder}
      FILES_MATCHING PATTERN "*.h")
  endforeach()
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/MxGenerate.cmake DESTINATION ${MX_CMAKE_DIR})
endif()
install(EXPORT MxXmlLibTargets NAMESPACE MxXmlLib:: DESTINATION ${MX_CMAKE_DIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/MxXmlLibConfig.cmake.in
  ${PROJECT_BINARY_DIR}/MxXmlLibConfig.cmake INSTALL_DESTINATION ${MX_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/MxXmlLibConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/MxXmlLibConfig.cmake ${PROJECT_BINARY_DIR}/MxXmlLibConfigVersion.cmake
  DESTINATION ${MX_CMAKE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/mxxmllib.pc.in ${PROJECT_BINARY_DIR}/mxxmllib.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/mxxmllib.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# cpack -G DEB: the run-time dependencies come from dpkg-shlibdeps, so they
# are the libraries the installed files really link.
set(CPACK_PACKAGE_NAME mxxmllib)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "MxXmlLib maintainers <maintainers@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "XML data binding: XML, JSON and Fast Infoset from XML schemas")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
include(CPack)
