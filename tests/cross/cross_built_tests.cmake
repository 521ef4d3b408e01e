# Test programs for another system are compiled and linked, and never run. GoogleTest is built from the source that Debian
# keeps beside its library.
set(googletest /usr/src/googletest)
add_library(cross_built_gtest STATIC EXCLUDE_FROM_ALL
  ${googletest}/googletest/src/gtest-all.cc
  ${googletest}/googlemock/src/gmock-all.cc)
target_include_directories(cross_built_gtest
  SYSTEM PUBLIC ${googletest}/googletest/include ${googletest}/googlemock/include
  PRIVATE ${googletest}/googletest ${googletest}/googlemock)
add_library(cross_built_gtest_main STATIC EXCLUDE_FROM_ALL ${googletest}/googletest/src/gtest_main.cc)
target_link_libraries(cross_built_gtest_main PUBLIC cross_built_gtest)
add_library(GTest::gtest ALIAS cross_built_gtest)
add_library(GTest::gmock ALIAS cross_built_gtest)
add_library(GTest::gtest_main ALIAS cross_built_gtest_main)
