# libqrv_blas.so: the names that existing programs bind to, over the upper-case entries. An entry has the arguments of
# the published Fortran routine, so its Fortran name is another name for it, which the linker gives.

# Which entries have one is told by their rows.
set(generated ${PROJECT_BINARY_DIR}/src/generated)
set(names ${PROJECT_SOURCE_DIR}/src/interop/names.def)
file(GLOB rows CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/routines/*.def)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${names} ${rows})
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -E -P -x c++ -I${PROJECT_SOURCE_DIR}/src ${names}
                OUTPUT_VARIABLE rows COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "export +[A-Z0-9]+" exported "${rows}")
list(TRANSFORM exported REPLACE "^export +" "")
list(REMOVE_ITEM exported CDOTC CDOTU) # whose Fortran names have other arguments: src/interop/fortran.cpp
list(JOIN exported "\n" lines)
file(CONFIGURE OUTPUT ${generated}/qrv_blas.names CONTENT "${lines}\n")

set(controls ${PROJECT_SOURCE_DIR}/include/qrv/service.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${controls})
file(STRINGS ${controls} control_names REGEX "^QRV_API ")
list(TRANSFORM control_names REPLACE "^QRV_API .*(qrv_serv_[a-z0-9_]+)\\(.*" "\\1")

set(aliases "")
set(global "cdotc_; cdotu_; cblas_*;")
foreach(control IN LISTS control_names)
  string(APPEND aliases "-Wl,--undefined=${control}\n")
  string(APPEND global " ${control};")
endforeach()
foreach(entry IN LISTS exported)
  string(TOLOWER ${entry}_ name)
  string(APPEND aliases "-Wl,--defsym=${name}=${entry}\n-Wl,--undefined=${entry}\n")
  string(APPEND global " ${name};")
endforeach()
file(CONFIGURE OUTPUT ${generated}/qrv_blas.aliases CONTENT "${aliases}")
file(CONFIGURE OUTPUT ${generated}/qrv_blas.map CONTENT "{ global: ${global} local: *; };\n")
file(CONFIGURE OUTPUT ${generated}/qrv_blas.replaceable CONTENT "{ cblas_xerbla; };\n") # by a program's

set(interop ${PROJECT_SOURCE_DIR}/src/interop)
add_library(qrv_blas SHARED ${interop}/cblas.cpp ${interop}/fortran.cpp ${interop}/reporter.cpp ${interop}/thread_end.cpp)
add_library(qrv::qrv_blas ALIAS qrv_blas)
target_include_directories(qrv_blas
  PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  PRIVATE ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(qrv_blas PRIVATE qrv_static OpenMP::OpenMP_CXX Threads::Threads ${CMAKE_DL_LIBS})
target_link_options(qrv_blas PRIVATE @${generated}/qrv_blas.aliases LINKER:--version-script=${generated}/qrv_blas.map
  LINKER:--dynamic-list=${generated}/qrv_blas.replaceable ${QRV_STAYS_LOADED})
set_target_properties(qrv_blas PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS "${generated}/qrv_blas.aliases;${generated}/qrv_blas.map;${generated}/qrv_blas.replaceable")
qrv_native_flags(qrv_blas)
