# The few ways in which this project makes targets. A folder's CMakeLists.txt says only what is its own.

include(Layers)

# tq_layer(<name>): the static library of Sources/<name>, linked to every layer below it.
function(tq_layer name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.hpp)
  list(FILTER sources EXCLUDE REGEX "/Program/")
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC tq_options)
  foreach(below IN LISTS TQ_LAYERS)
    if(below STREQUAL name)
      break()
    endif()
    target_link_libraries(${name} PUBLIC ${below})
  endforeach()
  target_precompile_headers(${name} REUSE_FROM tq_precompiled)
  add_dependencies(${name} tq_layering)
endfunction()

# How long a test program may take before it counts as hanging. Under a sanitizer everything takes several times as long.
set(TQ_TEST_SECONDS 300)
if(TQ_SANITIZERS)
  set(TQ_TEST_SECONDS 900)
endif()

# tq_test(<name> [libraries...]): the test program of the folder it is called in. CTest runs it as a whole, because starting
# a program for each of many hundred cases takes longer than the cases; --gtest_filter picks single ones.
function(tq_test name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE tq_test_support ${ARGN})
  target_precompile_headers(${name} REUSE_FROM tq_test_precompiled)
  add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
  set_tests_properties(${name} PROPERTIES TIMEOUT ${TQ_TEST_SECONDS})
endfunction()

add_custom_target(tq_layering ALL
  COMMAND ${CMAKE_COMMAND} -DTQ_ROOT=${CMAKE_SOURCE_DIR} -P ${CMAKE_SOURCE_DIR}/cmake/CheckLayering.cmake
  COMMENT "Checking who includes whom" VERBATIM)
