# The kernel builds: what each may use, and its sources under src/.
set(QRV_KERNEL_BUILDS generic sse2 sse3 ssse3 sse42)
set(QRV_KERNEL_FLAGS_generic "")
set(QRV_KERNEL_FLAGS_sse2 -msse2)
set(QRV_KERNEL_FLAGS_sse3 -msse3)
set(QRV_KERNEL_FLAGS_ssse3 -mssse3)
set(QRV_KERNEL_FLAGS_sse42 -msse4.2)
foreach(build IN LISTS QRV_KERNEL_BUILDS)
  set(QRV_KERNEL_SOURCES_${build} blas/kernel/${build}/gemm.cpp blas/kernel/${build}/level1.cpp blas/kernel/${build}/level2.cpp
      blas/kernel/${build}/level3.cpp)
endforeach()

# Forms of the sse42 build for wider vectors: an instruction set and a namespace of their own.
if(QRV_WIDE_KERNELS)
  list(APPEND QRV_KERNEL_BUILDS sse42_avx2 sse42_avx512)
  set(QRV_KERNEL_FLAGS_sse42_avx2 -mavx2 -mfma)
  set(QRV_KERNEL_FLAGS_sse42_avx512
      -mavx512f -mavx512vl -mavx512dq -mavx512bw -mavx2 -mfma -mprefer-vector-width=512)
  set(QRV_KERNEL_SOURCES_sse42_avx2 blas/kernel/sse42/gemm_avx2.cpp blas/kernel/sse42/level1_avx2.cpp blas/kernel/sse42/level2_avx2.cpp
      blas/kernel/sse42/level3_avx2.cpp)
  set(QRV_KERNEL_SOURCES_sse42_avx512 blas/kernel/sse42/gemm_avx512.cpp blas/kernel/sse42/level1_avx512.cpp blas/kernel/sse42/level2_avx512.cpp
      blas/kernel/sse42/level3_avx512.cpp)
  # GCC's own intrinsics leave the unused source of an operation undefined, and GCC 12 warns of it. Allocating registers
  # loop by loop it spills operands of the full tiles, for the whole function it does not.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list(APPEND QRV_KERNEL_FLAGS_sse42_avx2 -Wno-uninitialized -Wno-maybe-uninitialized -fira-region=all)
    list(APPEND QRV_KERNEL_FLAGS_sse42_avx512 -Wno-uninitialized -Wno-maybe-uninitialized -fira-region=all)
  endif()
endif()
