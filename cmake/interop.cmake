# libqrv_blas.so: the names that existing programs bind to, over the upper-case entries. An entry has the arguments of
# the published Fortran routine, so its Fortran name is another name for it, which the linker gives.

set(names ${PROJECT_SOURCE_DIR}/src/interop/names.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${names})
file(STRINGS ${names} exported REGEX "^export ")
list(TRANSFORM exported REPLACE "^export +" "")
string(REGEX REPLACE "[ ;]+" ";" exported "${exported}")

set(aliases "")
set(global "cdotc_; cdotu_; cblas_*;")
foreach(entry IN LISTS exported)
  string(TOLOWER ${entry}_ name)
  string(APPEND aliases "-Wl,--defsym=${name}=${entry}\n-Wl,--undefined=${entry}\n")
  string(APPEND global " ${name};")
endforeach()
set(generated ${PROJECT_BINARY_DIR}/src/generated)
file(CONFIGURE OUTPUT ${generated}/qrv_blas.aliases CONTENT "${aliases}")
file(CONFIGURE OUTPUT ${generated}/qrv_blas.map CONTENT "{ global: ${global} local: *; };\n")

add_library(qrv_blas SHARED ${PROJECT_SOURCE_DIR}/src/interop/cblas.cpp ${PROJECT_SOURCE_DIR}/src/interop/fortran.cpp)
target_include_directories(qrv_blas PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(qrv_blas PRIVATE qrv_static OpenMP::OpenMP_CXX Threads::Threads)
target_link_options(qrv_blas PRIVATE @${generated}/qrv_blas.aliases LINKER:--version-script=${generated}/qrv_blas.map
  ${QRV_STAYS_LOADED})
set_target_properties(qrv_blas PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS "${generated}/qrv_blas.aliases;${generated}/qrv_blas.map")
qrv_native_flags(qrv_blas)
