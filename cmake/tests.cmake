# How tests are declared: GoogleTest programs and pytest files, run by CTest.

# The package's library is of the machine's own word size; for another its sources are built.
find_package(GTest)
if(NOT TARGET GTest::gtest_main)
  add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endif()
include(GoogleTest)
find_program(SONAPROBE_PYTEST NAMES pytest-3 REQUIRED)

# There is one trace facility on a machine: tests that use it run one at a time.
set(SONAPROBE_FACILITY_LOCK trace_facility)

# sonaprobe_gtest(NAME [FACILITY] SOURCES ... LIBRARIES ...)
function(sonaprobe_gtest name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "FACILITY" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gtest_main GTest::gmock)
  set(properties TIMEOUT 300)
  if(arg_FACILITY)
    list(APPEND properties RESOURCE_LOCK ${SONAPROBE_FACILITY_LOCK})
  endif()
  gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()

# sonaprobe_pytest(FILE [FACILITY]): a pytest file of the current folder, as one test named after it.
function(sonaprobe_pytest file)
  cmake_parse_arguments(PARSE_ARGV 1 arg "FACILITY" "" "")
  get_filename_component(folder ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  string(REGEX REPLACE "\\.py$" "" name "${folder}.${file}")
  add_test(NAME ${name} COMMAND ${SONAPROBE_PYTEST} -q -rs -p no:cacheprovider
                                ${CMAKE_CURRENT_SOURCE_DIR}/${file})
  set_tests_properties(
    ${name}
    PROPERTIES
      TIMEOUT 600
      ENVIRONMENT
      "SONAPROBE_BUILD_DIR=${PROJECT_BINARY_DIR};SONAPROBE_SOURCE_DIR=${PROJECT_SOURCE_DIR};PYTHONPATH=${PROJECT_SOURCE_DIR}/tests/support;PYTHONDONTWRITEBYTECODE=1"
  )
  if(arg_FACILITY)
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK ${SONAPROBE_FACILITY_LOCK})
  endif()
endfunction()
