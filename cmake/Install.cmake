# Library, headers, documents, and the packages for CMake and pkg-config: find_package(zvwt) gives
# the target zvwt::zvwt. The library itself is a component of its own; all else here is for
# development.

include(CMakePackageConfigHelpers)

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
set(zvwt_header_root ${CMAKE_INSTALL_INCLUDEDIR}/zvwt)
set(zvwt_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zvwt)
set(zvwt_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(zvwt_document_dir ${CMAKE_INSTALL_DOCDIR})
if(WIN32)
  set(zvwt_document_dir .)
endif()

install(TARGETS zvwt EXPORT zvwtTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${zvwt_header_root} FILES_MATCHING PATTERN "*.h")
foreach(header ${zvwt_public_platform_headers})
  cmake_path(GET header PARENT_PATH folder)
  cmake_path(RELATIVE_PATH folder BASE_DIRECTORY platform OUTPUT_VARIABLE room)
  install(FILES ${header} DESTINATION ${zvwt_header_root}/${room})
endforeach()

install(FILES bindings/python/zvwt.py DESTINATION ${CMAKE_INSTALL_DATADIR}/zvwt/python)

install(EXPORT zvwtTargets NAMESPACE zvwt:: DESTINATION ${zvwt_package_dir}
        FILE zvwtTargets.cmake)
configure_package_config_file(cmake/zvwtConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/zvwtConfig.cmake
                              INSTALL_DESTINATION ${zvwt_package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/zvwtConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zvwtConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/zvwtConfigVersion.cmake
        DESTINATION ${zvwt_package_dir})

# Says where it lies by its own place, as the CMake package does: what is installed can be moved.
string(REGEX REPLACE "[^/]+" ".." zvwt_prefix_from_pkgconfig ${zvwt_pkgconfig_dir})
configure_file(cmake/zvwt.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zvwt.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zvwt.pc DESTINATION ${zvwt_pkgconfig_dir})

install(FILES README.md DESTINATION ${zvwt_document_dir})
install(DIRECTORY docs DESTINATION ${zvwt_document_dir}
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg")
