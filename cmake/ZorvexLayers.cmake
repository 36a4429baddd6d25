# A layer is one folder of src: an object library zorvex_<name> of all its sources.
function(zorvex_layer name)
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cpp")
  if(NOT sources)
    return()
  endif()
  add_library(zorvex_${name} OBJECT ${sources})
  target_link_libraries(zorvex_${name} PRIVATE zorvex_options)
  if(name STREQUAL "linalg")
    target_link_libraries(zorvex_${name} PRIVATE AMD::AMD METIS::METIS)
  endif()
  target_compile_definitions(zorvex_${name} PRIVATE ZORVEX_BUILDING)
  set_property(GLOBAL APPEND PROPERTY ZORVEX_LAYERS zorvex_${name})
endfunction()

# The code of tests is compiled for short builds: what they exercise lies in the libraries, which stay optimized and
# checked in full.
function(zorvex_quick_build target)
  target_compile_options(${target} PRIVATE -O1)
  if(ZORVEX_SANITIZE MATCHES "undefined")
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
endfunction()

# Test program test_<name> of tests/<name>/*.cpp, linked with the objects of the given layers (those that exist).
# Suites with "Slow" in their name carry the label slow: the sanitizer presets leave them out.
function(zorvex_layer_test name)
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cpp")
  if(NOT sources)
    return()
  endif()
  add_executable(test_${name} ${sources})
  target_include_directories(test_${name} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(test_${name} PRIVATE zorvex_options)
  foreach(layer IN LISTS ARGN)
    if(TARGET zorvex_${layer})
      target_link_libraries(test_${name} PRIVATE zorvex_${layer})
    endif()
  endforeach()
  if("linalg" IN_LIST ARGN)
    target_link_libraries(test_${name} PRIVATE zorvex_test_support AMD::AMD METIS::METIS ${CMAKE_DL_LIBS})
  endif()
  target_link_libraries(test_${name} PRIVATE GTest::gtest_main ZLIB::ZLIB Threads::Threads)
  target_compile_definitions(test_${name} PRIVATE "ZORVEX_MODELS_DIR=\"${ZORVEX_MODELS_DIR}\"")
  zorvex_quick_build(test_${name})
  zorvex_discover_tests(test_${name})
endfunction()

function(zorvex_discover_tests target)
  gtest_discover_tests(${target} TEST_FILTER "-*Slow*" TEST_LIST ${target}_TESTS DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 600)
  gtest_discover_tests(${target} TEST_FILTER "*Slow*" TEST_LIST ${target}_SLOW_TESTS DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 1500 LABELS slow)
endfunction()
