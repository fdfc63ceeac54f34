# The few ways in which this project makes targets. A folder's CMakeLists.txt says only what is its own.

include(Layers)

# tq_layer(<name>): the static library of Sources/<name>, linked to every layer below it.
function(tq_layer name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.hpp)
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

# tq_test(<name> [libraries...]): the test program of the folder it is called in, every case known to CTest.
function(tq_test name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE tq_test_support ${ARGN})
  target_precompile_headers(${name} REUSE_FROM tq_test_precompiled)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120 LABELS ${name})
endfunction()

add_custom_target(tq_layering ALL
  COMMAND ${CMAKE_COMMAND} -DTQ_ROOT=${CMAKE_SOURCE_DIR} -P ${CMAKE_SOURCE_DIR}/cmake/CheckLayering.cmake
  COMMENT "Checking who includes whom" VERBATIM)
