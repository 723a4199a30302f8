# What a user's build system finds: headers, libraries, a CMake package and a pkg-config file.
# Nothing installed holds an absolute path, so the prefix may be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Without a component everything is installed; with them, packages.cmake makes a package of each.
foreach(library IN ITEMS "qrv library" "qrv_static development" "qrv_blas drop-in")
  separate_arguments(words UNIX_COMMAND ${library})
  list(GET words 1 component)
  list(GET words 0 target)
  install(TARGETS ${target} EXPORT qrvTargets
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT development
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component}
          INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endforeach()
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qrv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qrv)
install(EXPORT qrvTargets NAMESPACE qrv:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/qrvConfig.cmake.in ${PROJECT_BINARY_DIR}/qrvConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qrvConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qrvConfig.cmake ${PROJECT_BINARY_DIR}/qrvConfigVersion.cmake
        DESTINATION ${package_dir})

# From <libdir>/pkgconfig back to the prefix, whatever depth the library folder has.
file(RELATIVE_PATH QRV_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" QRV_PC_TO_PREFIX "${QRV_PC_TO_PREFIX}")
foreach(package qrv qrv-blas)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

if(TARGET qrv_tool)
  file(RELATIVE_PATH lib_from_bin /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
  set_target_properties(qrv_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
  set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME tools)
  install(TARGETS qrv_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  set(texts ${PROJECT_BINARY_DIR}/tools)
  install(FILES ${texts}/qrv.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${texts}/qrv.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME qrv)
  install(FILES ${texts}/_qrv DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
endif()
