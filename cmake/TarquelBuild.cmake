# Compiler, warnings, sanitizers, linker and precompiled headers, the same for every target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

option(TQ_WERROR "Warnings are errors" ON)
set(TQ_SANITIZERS "" CACHE STRING "Value for -fsanitize=, empty for none")
option(TQ_BENCHMARKS "Build the benchmarks, which every build with tests does anyway" OFF)
option(TQ_FUZZ "Build the fuzzing targets for libFuzzer; takes clang" OFF)

find_program(TQ_CCACHE ccache)
if(TQ_CCACHE)
  # Precompiled headers are only cacheable when their time stamps are left out of the key.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros
      CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} ${TQ_CCACHE})
endif()

add_library(tq_options INTERFACE)
target_compile_features(tq_options INTERFACE cxx_std_20)
target_include_directories(tq_options INTERFACE ${CMAKE_SOURCE_DIR}/Sources)
# Records are written with designated initialisers, where a member that is not named has its default on purpose.
target_compile_options(tq_options INTERFACE
  -Wall -Wextra -Wno-missing-field-initializers -Wpedantic -Wshadow -Wconversion -fno-omit-frame-pointer
  $<$<BOOL:${TQ_WERROR}>:-Werror>
  $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>
  # For clang alone: a part of -Wconversion that finds literals used as an index, and complaints about how GCC's own
  # library writes std::stable_sort.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>
  $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>
  $<$<BOOL:${TQ_FUZZ}>:-fsanitize=fuzzer-no-link>)
if(TQ_SANITIZERS)
  target_compile_options(tq_options INTERFACE -fsanitize=${TQ_SANITIZERS} -fno-sanitize-recover=all)
  target_link_options(tq_options INTERFACE -fsanitize=${TQ_SANITIZERS})
endif()
find_program(TQ_MOLD mold)
if(TQ_MOLD)
  target_link_options(tq_options INTERFACE -fuse-ld=mold)
endif()
find_package(Threads REQUIRED)
target_link_libraries(tq_options INTERFACE Threads::Threads)

# One precompiled header for all library targets, one with GoogleTest for all test targets.
set(TQ_STANDARD_HEADERS <algorithm> <array> <chrono> <cstdint> <exception> <filesystem> <functional> <map> <memory>
    <mutex> <optional> <span> <stop_token> <string> <string_view> <thread> <utility> <variant> <vector>)
file(WRITE ${CMAKE_BINARY_DIR}/precompiled.cpp "")
add_library(tq_precompiled OBJECT ${CMAKE_BINARY_DIR}/precompiled.cpp)
target_link_libraries(tq_precompiled PRIVATE tq_options)
target_precompile_headers(tq_precompiled PRIVATE ${TQ_STANDARD_HEADERS})
