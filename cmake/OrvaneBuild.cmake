# Compiler settings that every target of this repository shares.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
file(RELATIVE_PATH bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/${bin_to_lib}")

# orvane_precompile(TARGET HEADERS_OR_REUSE...): parses the standard headers that most sources read once for the target.
# GCC 12 gives false alarms inside std::string where it optimises precompiled headers, and so goes without.
set(ORVANE_COMMON_HEADERS <algorithm> <array> <complex> <cstdint> <map> <memory> <string> <type_traits> <vector>)
function(orvane_precompile target)
  if(ORVANE_SANITIZE OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_precompile_headers(${target} ${ARGN})
  endif()
endfunction()

add_library(orvane_build INTERFACE)
# Contraction would fuse a multiplication and an addition into one rounding; results must not depend on it.
target_compile_options(orvane_build INTERFACE -ffp-contract=off
  -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>  # GCC 12 gives false alarms for std::string's operator+
  $<$<BOOL:${ORVANE_WERROR}>:-Werror>)
target_include_directories(orvane_build INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
if(ORVANE_SANITIZE)
  target_compile_options(orvane_build INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(orvane_build INTERFACE -fsanitize=address,undefined)
endif()
if(ORVANE_BUILD_FUZZ)
  target_compile_options(orvane_build INTERFACE -fsanitize=fuzzer-no-link)
endif()
