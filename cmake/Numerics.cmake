# The arithmetic contract of the project, as one interface target: every library, test and benchmark of ours links
# `Velmarind::numerics`, so the same input gives the same bits in every build.

foreach(flags IN ITEMS CMAKE_CXX_FLAGS CMAKE_CXX_FLAGS_RELEASE CMAKE_CXX_FLAGS_RELWITHDEBINFO CMAKE_CXX_FLAGS_DEBUG)
  if("${${flags}}" MATCHES "-ffast-math|-Ofast|-funsafe-math|-fassociative-math|-ffinite-math|-freciprocal-math|-mfma|-march=|-ffp-contract=(fast|on)")
    message(FATAL_ERROR "${flags} holds ${CMAKE_MATCH_0}: results must not depend on the build, so this flag is refused.")
  endif()
endforeach()

add_library(velmarind_numerics INTERFACE)
add_library(Velmarind::numerics ALIAS velmarind_numerics)
target_compile_features(velmarind_numerics INTERFACE cxx_std_20)
# GCC and Clang fuse a*b+c by default where the target can; a fused product rounds once instead of twice.
target_compile_options(velmarind_numerics INTERFACE -ffp-contract=off)
