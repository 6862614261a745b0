# What the folders' CMake lists are written with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# One place for everything that is run or loaded, so that the command finds the plug-in beside itself.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

# What a plug-in's blocks say of themselves stands beside it: `libOwn.manual` beside `libOwn.so`.
set(QUILLMERE_MANUAL_ENDING "manual")
set(VELMARIND_MANUAL "${CMAKE_SHARED_MODULE_PREFIX}Velmarind.${QUILLMERE_MANUAL_ENDING}")
set(VELMARIND_EVERYDAY_MANUAL "${CMAKE_SHARED_MODULE_PREFIX}VelmarindEveryday.${QUILLMERE_MANUAL_ENDING}")

# velmarind_plugin_file(TARGET MANUAL FOLDER): what holds of a plug-in of ours as a file: it shows its entry
# functions and nothing else, and the pages of the blocks in it, which lie in FOLDER, go beside it into
# MANUAL.
function(velmarind_plugin_file target manual folder)
  set(map "${PROJECT_SOURCE_DIR}/plugin/Velmarind.map")
  target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
  # A sanitizer's runtime comes with the program, so its symbols stay open in a plug-in.
  if(NOT "${CMAKE_CXX_FLAGS_RELWITHDEBINFO}" MATCHES "-fsanitize")
    target_link_options(${target} PRIVATE "LINKER:--no-undefined")
  endif()
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${map}")
  file(GLOB pages CONFIGURE_DEPENDS "${folder}/*.yaml")
  foreach(page IN LISTS pages)
    cmake_path(GET page FILENAME name)
    configure_file("${page}" "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${manual}/${name}" COPYONLY)
  endforeach()
endfunction()

# What gets -O3 in every build but those for debugging: loops that are unrolled and kept in registers cost
# half there.
set(VELMARIND_HOT_OPTIONS "$<$<NOT:$<CONFIG:Debug>>:-O3>")
if("${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_RELWITHDEBINFO}" MATCHES "-fsanitize")
  set(VELMARIND_HOT_OPTIONS "")
endif()

# velmarind_engines(NAME sources...): an object library that the plug-in and the tests link, of engines or of
# blocks.
function(velmarind_engines name)
  add_library(velmarind_${name} OBJECT ${ARGN})
  add_library(Velmarind::${name} ALIAS velmarind_${name})
  target_include_directories(velmarind_${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(velmarind_${name} PUBLIC Velmarind::numerics Eigen3::Eigen)
endfunction()

# velmarind_kernels(NAME sources...): loops of velmarind_engines(NAME) that are compiled as everything else is
# and, for PCs, once more for processors with AVX2; processor/Kernels.h tells the rest. AVX2 brings no fused
# multiply-adds; x86-64-v3 would.
set(VELMARIND_KERNEL_OPTIONS -fno-tree-vectorize -fno-tree-slp-vectorize)
include(CheckCXXSourceCompiles)
check_cxx_source_compiles("#ifndef __x86_64__\n#error\n#endif\nint main() {}" VELMARIND_IS_PC)
function(velmarind_kernels name)
  target_sources(velmarind_${name} PRIVATE ${ARGN})
  # Kernels say themselves what goes into one register. A compiler that joins more would load at once what was
  # stored in two parts, and the processor would wait for both.
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS "${VELMARIND_KERNEL_OPTIONS}")
  if(NOT VELMARIND_IS_PC)
    return()
  endif()
  foreach(source IN LISTS ARGN)
    set(copy "${CMAKE_CURRENT_BINARY_DIR}/avx2/${source}")
    file(CONFIGURE OUTPUT "${copy}" CONTENT "#include \"${CMAKE_CURRENT_SOURCE_DIR}/${source}\"\n")
    target_sources(velmarind_${name} PRIVATE "${copy}")
    set_source_files_properties("${copy}" PROPERTIES
      COMPILE_OPTIONS "${VELMARIND_KERNEL_OPTIONS};-mavx2;-mno-fma" COMPILE_DEFINITIONS VELMARIND_KERNELS_AVX2)
  endforeach()
endfunction()

# velmarind_tests(ROOM LIBRARIES libs... SOURCES files...): one test program per room. The one list of
# sources both builds the tests and registers each of them with CTest; with VELMARIND_TESTS_IN_HALVES it
# registers the two halves of the program, since a sanitizer takes longer to start a process than most tests
# to run. The label `threads` marks what the thread sanitizer has to see; the target `thread_tests` builds
# all of that. With KERNELS the whole program runs once more on the plain kernels.
add_custom_target(thread_tests)
function(velmarind_tests room)
  cmake_parse_arguments(ARG "KERNELS" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  set(target test_${room})
  add_executable(${target} ${ARG_SOURCES})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE ${ARG_LIBRARIES} Velmarind::test_support)
  # Most of a small test's compile time goes into these; read once for the program, they cost half.
  list(LENGTH ARG_SOURCES count)
  if(count GREATER 8 AND "${ARG_LIBRARIES}" MATCHES "framework")
    target_precompile_headers(${target} PRIVATE <gtest/gtest.h> "${PROJECT_SOURCE_DIR}/framework/Quillmere.h")
  endif()
  if(VELMARIND_TESTS_IN_HALVES)
    foreach(half RANGE 1)
      add_test(NAME ${room}.Half${half} COMMAND ${target} --gtest_brief=1)
      set_tests_properties(${room}.Half${half} PROPERTIES TIMEOUT 1800 LABELS "${room};${ARG_LABELS}"
                           ENVIRONMENT "GTEST_TOTAL_SHARDS=2;GTEST_SHARD_INDEX=${half}")
    endforeach()
  else()
    gtest_discover_tests(${target} TEST_PREFIX "${room}." DISCOVERY_TIMEOUT 60
                         PROPERTIES TIMEOUT 300 LABELS "${room};${ARG_LABELS}")
  endif()
  if(ARG_KERNELS)
    target_sources(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests/support/KernelsTest.cpp")
    add_test(NAME ${room}.WithPlainKernels COMMAND ${target})
    set_tests_properties(${room}.WithPlainKernels PROPERTIES ENVIRONMENT VELMARIND_KERNELS=plain TIMEOUT 300 LABELS ${room})
  endif()
  if("threads" IN_LIST ARG_LABELS)
    add_dependencies(thread_tests ${target})
  endif()
endfunction()
