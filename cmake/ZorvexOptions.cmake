# Compiler settings common to every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")

add_library(zorvex_warnings INTERFACE)
target_compile_options(zorvex_warnings INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Werror
  # int/size_t mixing at container boundaries is bounded by the two-billion limits of the interface.
  -Wno-sign-conversion
  # g++ 12 sees overlaps in std::string's operator+ that are not there (its bug 105651).
  -Wno-restrict)

add_library(zorvex_options INTERFACE)
target_link_libraries(zorvex_options INTERFACE zorvex_warnings)
target_include_directories(zorvex_options INTERFACE
  "${CMAKE_CURRENT_SOURCE_DIR}/include" "${CMAKE_CURRENT_SOURCE_DIR}/src")

set(ZORVEX_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")
if(ZORVEX_SANITIZE)
  add_compile_options("-fsanitize=${ZORVEX_SANITIZE}" -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options("-fsanitize=${ZORVEX_SANITIZE}")
endif()
