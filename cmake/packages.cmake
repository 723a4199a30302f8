# Packages of Debian: `./qrv package` makes them of a build for the prefix /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qrv)
set(CPACK_PACKAGE_CONTACT "The qrv developers <qrv@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_COMPONENTS_ALL library development drop-in)
if(TARGET qrv_tool)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()

set(abi ${PROJECT_VERSION_MAJOR})
set(exactly "(= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libqrv${abi})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
    "BLAS and LAPACK operations, real and complex, behind one provider object of
C++, with kernels for each class of processors and OpenMP teams.")
set(CPACK_DEBIAN_DROP-IN_PACKAGE_NAME libqrv-blas${abi})
set(CPACK_DEBIAN_DROP-IN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DROP-IN_DESCRIPTION
    "BLAS and LAPACK under their published Fortran and C names, for programs that
bind to them, linked or preloaded.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqrv-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libqrv${abi} ${exactly}, libqrv-blas${abi} ${exactly}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "Headers, static library, CMake package and pkg-config files.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qrv)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION math)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libqrv${abi} ${exactly}")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
    "The program qrv: solves, inverts, fits and factors matrices in files of Matrix
Market and NumPy, and tells how far the results can be trusted.")

# What Debian wants to know of each package.
set(history ${PROJECT_BINARY_DIR}/changelog.gz)
execute_process(COMMAND gzip -9nc ${CMAKE_CURRENT_LIST_DIR}/debian/changelog OUTPUT_FILE ${history})
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} name)
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/debian/copyright ${history} COMPONENT ${component}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME})
endforeach()
include(CPack)
