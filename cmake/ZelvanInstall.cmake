# The engine as a package: find_package(Zelvan) gives Zelvan::zelvan.
include(CMakePackageConfigHelpers)

target_include_directories(zelvan INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
install(TARGETS zelvan EXPORT ZelvanTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ZvCore Zelvan DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h" PATTERN "Platform/Posix" EXCLUDE PATTERN "Platform/Win32" EXCLUDE)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zelvan)

set(_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Zelvan)
install(EXPORT ZelvanTargets NAMESPACE Zelvan:: DESTINATION ${_config_dir})
configure_package_config_file(cmake/ZelvanConfig.cmake.in ${PROJECT_BINARY_DIR}/ZelvanConfig.cmake
  INSTALL_DESTINATION ${_config_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZelvanConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZelvanConfig.cmake ${PROJECT_BINARY_DIR}/ZelvanConfigVersion.cmake
  DESTINATION ${_config_dir})

if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_VENDOR "The Zelvan authors")
string(TOLOWER "zelvan-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" CPACK_PACKAGE_FILE_NAME)
include(CPack)
