# What a host needs to link libtrovek-ui: shared libraries, headers, a CMake package and
# pkg-config files.

include(CMakePackageConfigHelpers)

set(libraries rpcwire qtshared trovek pathscope trovek-ui)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/trovek-ui)

install(TARGETS ${libraries} EXPORT trovek-ui-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
foreach(program trovekd ostrand)
  if(TARGET ${program})
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  endif()
endforeach()
set_target_properties(${libraries} PROPERTIES INSTALL_RPATH "$ORIGIN")

if(UNIX AND NOT APPLE)
  configure_file(service/systemd/trovekd@.service.in ${CMAKE_BINARY_DIR}/trovekd@.service @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/trovekd@.service DESTINATION lib/systemd/system)
endif()

install(DIRECTORY include/trovek-ui DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
foreach(folder rpcwire qtshared trovek pathscope)
  install(DIRECTORY platform/${folder} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
          FILES_MATCHING PATTERN "*.h")
endforeach()
install(DIRECTORY ${CMAKE_BINARY_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT trovek-ui-targets NAMESPACE trovek-ui:: DESTINATION ${package_dir})
configure_package_config_file(cmake/trovek-ui-config.cmake.in
  ${CMAKE_BINARY_DIR}/trovek-ui-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/trovek-ui-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/trovek-ui-config.cmake
              ${CMAKE_BINARY_DIR}/trovek-ui-config-version.cmake
        DESTINATION ${package_dir})

# Relative, so that an installed tree may be moved.
file(RELATIVE_PATH prefix_from_pkgconfig /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/trovek-ui.pc.in ${CMAKE_BINARY_DIR}/trovek-ui.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/trovek-ui.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
