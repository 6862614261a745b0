# The arithmetic contract of the project, as one interface target: every library, test and benchmark of ours
# links `Velmarind::numerics`, so the same input gives the same bits in every build.

string(CONCAT refused "-ffast-math|-Ofast|-funsafe-math-optimizations|-fassociative-math|-ffinite-math-only|-freciprocal-math"
  "|-fno-signed-zeros|-fcx-limited-range|-fcx-fortran-rules|-ffp-model=(fast|aggressive)|-ffp-contract=(fast|on)"
  "|-mfma4?|-mrecip|-mfpmath=387|-march=[^ ]*")
foreach(configuration IN ITEMS "" _DEBUG _RELEASE _RELWITHDEBINFO _MINSIZEREL)
  set(flags CMAKE_CXX_FLAGS${configuration})
  if("${${flags}}" MATCHES "${refused}")
    message(FATAL_ERROR "${flags} holds ${CMAKE_MATCH_0}: results must not depend on the build, so this flag is refused.")
  endif()
endforeach()

add_library(velmarind_numerics INTERFACE)
add_library(Velmarind::numerics ALIAS velmarind_numerics)
target_compile_features(velmarind_numerics INTERFACE cxx_std_20)
# GCC and Clang fuse a*b+c by default where the target can; a fused product rounds once instead of twice.
target_compile_options(velmarind_numerics INTERFACE -ffp-contract=off)
# Matrices are made on one side of a library's border and freed on the other, so both sides have to agree on
# how. Eigen derives that from each one's vector width and sanitizer (`-mavx`, `-fsanitize=address`), unless
# it is told: plain `malloc`, which aligns to 16 bytes. The installed targets carry this to everybody's
# plug-ins and hosts.
target_compile_definitions(velmarind_numerics INTERFACE EIGEN_MAX_ALIGN_BYTES=16 EIGEN_MALLOC_ALREADY_ALIGNED=1)
