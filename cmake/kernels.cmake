# The kernel builds: what each may use, where its vectors are told, and its sources under src/. Those in
# blas/kernel/source are compiled once for each build.
set(QRV_KERNEL_BUILDS generic sse2 sse3 ssse3 sse42)
set(QRV_KERNEL_FLAGS_generic "")
set(QRV_KERNEL_FLAGS_sse2 -msse2)
set(QRV_KERNEL_FLAGS_sse3 -msse3)
set(QRV_KERNEL_FLAGS_ssse3 -mssse3)
set(QRV_KERNEL_FLAGS_sse42 -msse4.2)
foreach(build IN LISTS QRV_KERNEL_BUILDS)
  set(QRV_KERNEL_VECTORS_${build} blas/kernel/${build}/vec.hpp)
  set(QRV_KERNEL_GEMM_${build} blas/kernel/${build}/gemm.cpp)
endforeach()
set(QRV_KERNEL_GEMM_sse2 blas/kernel/source/gemm_panel.cpp)
set(QRV_KERNEL_GEMM_sse3 blas/kernel/source/gemm_panel.cpp)

# Forms of the sse42 build for wider vectors: an instruction set and a namespace of their own.
if(QRV_WIDE_KERNELS)
  list(APPEND QRV_KERNEL_BUILDS sse42_avx2 sse42_avx512)
  set(QRV_KERNEL_FLAGS_sse42_avx2 -mavx2 -mfma)
  set(QRV_KERNEL_FLAGS_sse42_avx512
      -mavx512f -mavx512vl -mavx512dq -mavx512bw -mavx2 -mfma -mprefer-vector-width=512)
  foreach(form avx2 avx512)
    set(QRV_KERNEL_VECTORS_sse42_${form} blas/kernel/sse42/vec_${form}.hpp)
    set(QRV_KERNEL_GEMM_sse42_${form} blas/kernel/sse42/gemm_${form}.cpp)
  endforeach()
  # GCC's own intrinsics leave the unused source of an operation undefined, and GCC 12 warns of it. Allocating registers
  # loop by loop it spills operands of the full tiles, for the whole function it does not.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list(APPEND QRV_KERNEL_FLAGS_sse42_avx2 -Wno-uninitialized -Wno-maybe-uninitialized -fira-region=all)
    list(APPEND QRV_KERNEL_FLAGS_sse42_avx512 -Wno-uninitialized -Wno-maybe-uninitialized -fira-region=all)
  endif()
endif()

foreach(build IN LISTS QRV_KERNEL_BUILDS)
  set(QRV_KERNEL_SOURCES_${build} ${QRV_KERNEL_GEMM_${build}} blas/kernel/source/level1.cpp
      blas/kernel/source/level2.cpp blas/kernel/source/level3.cpp)
endforeach()

# Of level 1: whether a loop begins on a boundary of 32 bytes made up to 1.5 of its time.
foreach(build sse2 sse3 ssse3 sse42 sse42_avx2 sse42_avx512)
  set(QRV_KERNEL_LEVEL1_FLAGS_${build} -falign-loops=32)
endforeach()
