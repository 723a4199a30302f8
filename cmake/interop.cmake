# libqrv_blas.so: the names that existing programs bind to, over the upper-case entries. An entry has the arguments of
# the published Fortran routine, so its Fortran name is another name for it, which the linker gives. The list of them is
# the declarations in the headers of include/qrv/native.

file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/qrv/native/*.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${headers})
set(declarations "")
foreach(header IN LISTS headers)
  file(STRINGS ${header} found REGEX "^QRV_API [a-z_]+ [A-Z0-9]+\\(")
  list(TRANSFORM found REPLACE "^QRV_API [a-z_]+ ([A-Z0-9]+)\\(.*" "\\1")
  list(APPEND declarations ${found})
endforeach()
# Functions with complex results are told in fortran.cpp. The tuning routines stay at home: other libraries ask them
# about routines of theirs, of both precisions.
list(REMOVE_ITEM declarations CDOTC CDOTU XERBLA ILAENV IPARMQ)

set(aliases "")
set(exported "cdotc_;cdotu_;")
foreach(entry IN LISTS declarations)
  string(TOLOWER ${entry}_ name)
  string(APPEND aliases "-Wl,--defsym=${name}=${entry}\n-Wl,--undefined=${entry}\n")
  string(APPEND exported "${name};")
endforeach()
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/src/generated/qrv_blas.aliases CONTENT "${aliases}")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/src/generated/qrv_blas.map
     CONTENT "{ global: ${exported} cblas_*; local: *; };\n")

add_library(qrv_blas SHARED ${PROJECT_SOURCE_DIR}/src/interop/cblas.cpp ${PROJECT_SOURCE_DIR}/src/interop/fortran.cpp)
target_include_directories(qrv_blas PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(qrv_blas PRIVATE qrv_static OpenMP::OpenMP_CXX Threads::Threads)
target_link_options(qrv_blas PRIVATE @${PROJECT_BINARY_DIR}/src/generated/qrv_blas.aliases
  LINKER:--version-script=${PROJECT_BINARY_DIR}/src/generated/qrv_blas.map)
set_target_properties(qrv_blas PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS "${PROJECT_BINARY_DIR}/src/generated/qrv_blas.aliases;${PROJECT_BINARY_DIR}/src/generated/qrv_blas.map")
qrv_native_flags(qrv_blas)
