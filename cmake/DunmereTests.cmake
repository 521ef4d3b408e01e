# A CTest entry for each GoogleTest case of the executable; further arguments as for gtest_discover_tests.
include(GoogleTest)
function(dunmere_discover_tests executable)
  if(NOT CMAKE_CROSSCOMPILING)  # what is built for another system is never run
    gtest_discover_tests(${executable} ${ARGN} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300)
  endif()
endfunction()
