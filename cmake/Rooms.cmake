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

# velmarind_engines(NAME sources...): an object library of plain objects over matrices.
function(velmarind_engines name)
  add_library(velmarind_${name} OBJECT ${ARGN})
  add_library(Velmarind::${name} ALIAS velmarind_${name})
  target_include_directories(velmarind_${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(velmarind_${name} PUBLIC Velmarind::numerics Eigen3::Eigen)
endfunction()

# velmarind_tests(ROOM LIBRARIES libs... SOURCES files...): one test program per room. The one list of sources both
# builds the tests and registers each of them with CTest. The label `threads` marks what the thread sanitizer has to see;
# the target `thread_tests` builds all of that.
add_custom_target(thread_tests)
function(velmarind_tests room)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  set(target test_${room})
  add_executable(${target} ${ARG_SOURCES})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE ${ARG_LIBRARIES} Velmarind::test_support)
  gtest_discover_tests(${target} TEST_PREFIX "${room}." DISCOVERY_TIMEOUT 60
                       PROPERTIES TIMEOUT 300 LABELS "${room};${ARG_LABELS}")
  if("threads" IN_LIST ARG_LABELS)
    add_dependencies(thread_tests ${target})
  endif()
endfunction()
