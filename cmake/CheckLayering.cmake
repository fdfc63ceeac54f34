# Fails when a source file includes what its layer must not see.
#   cmake -DTQ_ROOT=<root> -P CheckLayering.cmake
# Four rules: a quoted include names a layer at or below its own, and within a layer no room behind its own; an angled
# include outside TQPlatform is a header of the C++ standard library (TarquelApp may also include Qt), but not <fstream>,
# since files are read and written through TQPlatform/FileSystem alone (fuzzing targets may); nothing below the tests
# includes tests.

cmake_policy(SET CMP0057 NEW)
include(${CMAKE_CURRENT_LIST_DIR}/Layers.cmake)

set(STANDARD_HEADERS
  algorithm any array atomic barrier bit bitset cctype cerrno cfenv cfloat charconv chrono cinttypes climits clocale cmath
  codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib
  cstring ctime cuchar cwchar cwctype deque exception execution filesystem forward_list functional future
  initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource mutex
  new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore set shared_mutex
  source_location span sstream stack stdexcept stop_token streambuf string string_view strstream syncstream system_error
  thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector version)

set(faults "")

function(check_rooms file layer)
  set(visible "")
  set(before "")
  foreach(room IN LISTS TQ_ROOMS_${layer})
    if(file MATCHES "^Sources/${layer}/${room}/")
      set(visible "${before};${room}")
      break()
    endif()
    list(APPEND before ${room})
  endforeach()
  file(STRINGS ${TQ_ROOT}/${file} lines REGEX "^[ \t]*#[ \t]*include \"${layer}/[^/]+/")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE ".*\"${layer}/([^/]+)/.*" "\\1" room "${line}")
    if(room IN_LIST TQ_ROOMS_${layer} AND NOT room IN_LIST visible)
      set(faults "${faults}\n  ${file}: ${layer}/${room} is not below it")
    endif()
  endforeach()
  set(faults "${faults}" PARENT_SCOPE)
endfunction()

function(check_file file layer visible foreignAllowed)
  file(STRINGS ${TQ_ROOT}/${file} lines REGEX "^[ \t]*#[ \t]*include")
  foreach(line IN LISTS lines)
    if(line MATCHES "\"([^\"]+)\"")
      string(REGEX REPLACE "/.*" "" room "${CMAKE_MATCH_1}")
      if(NOT room IN_LIST visible)
        set(faults "${faults}\n  ${file}: \"${CMAKE_MATCH_1}\" is not below ${layer}")
      endif()
    elseif(line MATCHES "<([^>]+)>")
      set(header ${CMAKE_MATCH_1})
      if(NOT header IN_LIST STANDARD_HEADERS AND NOT foreignAllowed STREQUAL "any"
         AND NOT (foreignAllowed STREQUAL "Qt" AND header MATCHES "^Q[A-Z]"))
        set(faults "${faults}\n  ${file}: <${header}> may be included in TQPlatform only")
      endif()
    endif()
  endforeach()
  set(faults "${faults}" PARENT_SCOPE)
endfunction()

set(visible "")
foreach(layer IN LISTS TQ_LAYERS)
  list(APPEND visible ${layer})
  set(foreign none)
  if(layer STREQUAL TQPlatform)
    set(foreign any)
  elseif(layer STREQUAL TarquelApp)
    set(foreign Qt)
  endif()
  file(GLOB_RECURSE files RELATIVE ${TQ_ROOT} ${TQ_ROOT}/Sources/${layer}/*.hpp ${TQ_ROOT}/Sources/${layer}/*.cpp)
  foreach(file IN LISTS files)
    check_file(${file} ${layer} "${visible}" ${foreign})
    check_rooms(${file} ${layer})
  endforeach()
endforeach()

# The command-line programs and the fuzzing targets stand on the engine, beside the window. The benchmarks see that too, and
# use foreign libraries bare, to hold the engine against them.
set(engine ${TQ_LAYERS})
list(REMOVE_ITEM engine TarquelApp)
set(below_Benchmarks TarquelApp)
set(foreign_in_Benchmarks any)
foreach(room Tools Fuzz Benchmarks)
  if(room STREQUAL Fuzz)
    list(APPEND STANDARD_HEADERS fstream)
  endif()
  file(GLOB_RECURSE files RELATIVE ${TQ_ROOT} ${TQ_ROOT}/${room}/*.hpp ${TQ_ROOT}/${room}/*.cpp)
  foreach(file IN LISTS files)
    check_file(${file} ${room} "${engine};${room};${below_${room}}" "${foreign_in_${room}}")
  endforeach()
endforeach()

if(faults)
  message(FATAL_ERROR "The layering is broken:${faults}")
endif()
