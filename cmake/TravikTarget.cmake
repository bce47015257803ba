# One place for what every target of the house is built with.
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

add_library(travik-options INTERFACE)
target_compile_features(travik-options INTERFACE cxx_std_20)
target_compile_options(travik-options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wcast-align
  -Wformat=2 -Wimplicit-fallthrough -Wextra-semi $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wlogical-op>
  -Wno-error=deprecated-declarations -Werror)
target_compile_definitions(travik-options INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

if(TRAVIK_ANALYZE)
  # Left out is what the analyzer of GCC 12, made for C, says of sound C++: that a result which is returned by value is read before it
  # is made, that 'new' may be null (it throws), that a vector that grows may ask for no memory and store into it, that what an object
  # holds is lost (it does not follow destructors), and that a lambda without captures, called as a function, has no 'this'. Sanitizers
  # and Clang's analyzer look after these.
  target_compile_options(travik-options INTERFACE -fanalyzer -Wno-analyzer-use-of-uninitialized-value
    -Wno-analyzer-null-argument -Wno-analyzer-possible-null-argument -Wno-analyzer-null-dereference
    -Wno-analyzer-possible-null-dereference -Wno-analyzer-malloc-leak)
endif()

# float-cast-overflow is in no compiler's "undefined", and physical values from an image are just what overflows.
set(travik_sanitizers address,undefined,float-cast-overflow)
if(TRAVIK_BUILD_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "TRAVIK_BUILD_FUZZ needs Clang (libFuzzer), this is ${CMAKE_CXX_COMPILER_ID}: "
      "use the preset 'fuzz' or -DCMAKE_CXX_COMPILER=clang++")
  endif()
  # The library takes the coverage counters only; the engine comes with the fuzz targets. It is not told what is compared
  # with what, which took half of the time: identifiers and checksums are the mutators' business.
  set(travik_instrumentation -fsanitize=fuzzer-no-link,${travik_sanitizers} -fno-sanitize-coverage=trace-cmp)
elseif(TRAVIK_SANITIZE)
  set(travik_instrumentation -fsanitize=${travik_sanitizers})
endif()
if(travik_instrumentation)
  target_compile_options(travik-options INTERFACE
    ${travik_instrumentation} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(travik-options INTERFACE ${travik_instrumentation})
else()
  # A sanitizer's runtime is found only in the executable, so this check is for plain builds.
  target_link_options(travik-options INTERFACE LINKER:--no-undefined)
endif()

# Nearly all the time of a build goes into parsing these, so that every target parses them once.
set(travik_precompiled <QByteArray> <QString> <algorithm> <array> <charconv> <cmath> <functional> <map> <memory> <optional>
  <ostream> <span> <sstream> <string> <string_view> <vector>)

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Libraries lie beside each other, the tool in the neighbouring folder: the tree can be installed anywhere and moved.
file(RELATIVE_PATH travik_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/${travik_bin_to_lib}")
