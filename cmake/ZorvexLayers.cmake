# A layer is one folder of src: an object library zorvex_<name> of all its sources.
function(zorvex_layer name)
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cpp")
  if(NOT sources)
    return()
  endif()
  add_library(zorvex_${name} OBJECT ${sources})
  target_link_libraries(zorvex_${name} PRIVATE zorvex_options)
  target_compile_definitions(zorvex_${name} PRIVATE ZORVEX_BUILDING)
  set_property(GLOBAL APPEND PROPERTY ZORVEX_LAYERS zorvex_${name})
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
  target_link_libraries(test_${name} PRIVATE GTest::gtest_main ZLIB::ZLIB Threads::Threads)
  target_compile_definitions(test_${name} PRIVATE "ZORVEX_MODELS_DIR=\"${ZORVEX_MODELS_DIR}\"")
  zorvex_discover_tests(test_${name})
endfunction()

function(zorvex_discover_tests target)
  gtest_discover_tests(${target} TEST_FILTER "-*Slow*" TEST_LIST ${target}_TESTS DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 600)
  gtest_discover_tests(${target} TEST_FILTER "*Slow*" TEST_LIST ${target}_SLOW_TESTS DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 1500 LABELS slow)
endfunction()
