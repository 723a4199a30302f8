# Compiler flags of the project's own targets.
#
#   qrv_flags(target)      what every target of ours is built with
#   qrv_native_flags(...)  in addition, for code below the provider layer: no exceptions, no RTTI, no large frames
#   qrv_kernel_flags(...)  in addition, for one kernel build: its instruction set, fewer conversions warned of

# 32-bit code computes in SSE registers in every folder; x87 is used only where a source says long double.
# Callers may hand over a stack that is aligned to 4 bytes, so entries realign it.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(QRV_ARCH_FLAGS -msse2 -mfpmath=sse -mstackrealign)
else()
  set(QRV_ARCH_FLAGS "")
endif()

function(qrv_flags target)
  target_compile_options(${target} PRIVATE
    ${QRV_ARCH_FLAGS} -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow
    $<$<COMPILE_LANGUAGE:CXX>:-Wconversion>)
  if(CMAKE_BUILD_TYPE MATCHES "Debug|Sanitize")
    target_compile_definitions(${target} PRIVATE QRV_CHECKED) # asserts (blas/assert.hpp)
  endif()
  if(QRV_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

function(qrv_native_flags target)
  qrv_flags(${target})
  target_compile_options(${target} PRIVATE -fno-exceptions -fno-rtti -fno-math-errno -fno-trapping-math
    # A loop that is asked to be vectorized may stay as it is: sanitizers take the vectorizer away.
    $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wno-pass-failed>)
  # A host may give its threads small stacks: a call takes 48 KB at most, of which one frame may have the greater part.
  # Sanitizers enlarge frames.
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Sanitize")
    target_compile_options(${target} PRIVATE -Wframe-larger-than=36864)
  endif()
  if(QRV_WIDE_KERNELS)
    target_compile_definitions(${target} PRIVATE QRV_WIDE_KERNELS)
  endif()
endfunction()

function(qrv_kernel_flags target build)
  qrv_native_flags(${target})
  target_compile_options(${target} PRIVATE ${ARGN} -Wno-conversion -Wno-sign-conversion -fno-asynchronous-unwind-tables)
  # Vectors may begin at any byte, as the processor allows in the loops over elements. The other two find nothing that the
  # address sanitizer does not, and take a sixth of the time to compile.
  if(CMAKE_BUILD_TYPE STREQUAL "Sanitize")
    target_compile_options(${target} PRIVATE -fno-sanitize=alignment,null,object-size)
    if(build IN_LIST QRV_PLAIN_KERNEL_BUILDS)
      target_compile_options(${target} PRIVATE -fno-sanitize=all -O0)
    endif()
  endif()
  target_compile_definitions(${target} PRIVATE QRV_KERNEL_BUILD=${build}
                             QRV_KERNEL_VECTORS="${QRV_KERNEL_VECTORS_${build}}")
endfunction()

# Linker option of a shared product: the threads of the OpenMP runtime, handlers of fork and thread keys outlive a dlclose,
# so the library and the runtime that it brings stay where they are.
set(QRV_STAYS_LOADED LINKER:-z,nodelete)
