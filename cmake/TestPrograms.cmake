# The test programs, and the tests that CTest runs. Every program runs alone, too, from any folder; those of the
# Windows build need Wine then, and windows_tests its scanners: `tests/fixtures.sh` starts both.
set(TESKREAD_RUN_TEST "${CMAKE_SOURCE_DIR}/tests/run_test.sh")

# The code of tests is compiled fast instead of fast code: hardly optimised, not sanitized, common headers only once.
# What it tests is compiled as ever.
function(tesk_test_code target)
  target_compile_options(${target} PRIVATE -Og -g0)
  if(TESKREAD_SANITIZE)
    target_compile_options(${target} PRIVATE -fno-sanitize=all)
  endif()
  target_precompile_headers(
    ${target} PRIVATE <algorithm> <array> <chrono> <cstdint> <functional> <map> <memory> <optional> <span> <string>
    <string_view> <utility> <vector> <gmock/gmock.h> <gtest/gtest.h>)
endfunction()

function(tesk_test_program name folder)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/${folder}/*.cpp")
  file(GLOB_RECURSE support CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/support/*.cpp")
  if(WIN32)
    list(FILTER sources EXCLUDE REGEX "_posix_test\\.cpp$")
  else()
    list(FILTER sources EXCLUDE REGEX "_windows_test\\.cpp$")
  endif()
  add_executable(${name} ${sources} ${support})
  target_link_libraries(${name} PRIVATE tesk_cli tesk_options GTest::gmock_main)
  tesk_test_code(${name})
  target_compile_definitions(${name} PRIVATE TESKREAD_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data")
endfunction()

# tesk_add_cases(PROGRAM SHARDS n [LABELS labels...] [PREFIX folder] [FIXTURES fixtures...])
# The program's test cases as n tests that may run beside each other; PREFIX is the Wine prefix of a Windows program.
function(tesk_add_cases program)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "SHARDS;PREFIX" "LABELS;FIXTURES")
  set(launcher "")
  if(arg_PREFIX)
    set(launcher "${CMAKE_SOURCE_DIR}/cmake/wine.sh" "${CMAKE_BINARY_DIR}/${arg_PREFIX}")
  endif()
  math(EXPR last "${arg_SHARDS} - 1")
  foreach(shard RANGE ${last})
    set(name ${program}.${shard})
    add_test(NAME ${name} COMMAND "${TESKREAD_RUN_TEST}" cases "${CMAKE_BINARY_DIR}/reports/${name}.json" ${launcher}
                                  "$<TARGET_FILE:${program}>")
    set_tests_properties(
      ${name} PROPERTIES LABELS "${arg_LABELS}" FIXTURES_REQUIRED "${arg_FIXTURES}" TIMEOUT 900
                         ENVIRONMENT "GTEST_TOTAL_SHARDS=${arg_SHARDS};GTEST_SHARD_INDEX=${shard}"
                         ENVIRONMENT_MODIFICATION "DISPLAY=unset:")
    if(arg_PREFIX)
      # They put the maker's library where all programs of a prefix find it.
      set_tests_properties(${name} PROPERTIES RESOURCE_LOCK ${arg_PREFIX})
    endif()
  endforeach()
endfunction()

# tesk_leave_out(TEST PATTERNS): cases that the preset windows runs.
function(tesk_leave_out name pattern)
  set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT "GTEST_FILTER=-${pattern}")
endfunction()

# tesk_add_check(NAME COMMAND...): one test that passes when the command's status is 0.
function(tesk_add_check name)
  add_test(NAME ${name} COMMAND "${TESKREAD_RUN_TEST}" check ${ARGN} WORKING_DIRECTORY "${CMAKE_SOURCE_DIR}")
  set_tests_properties(${name} PROPERTIES LABELS check TIMEOUT 300)
endfunction()

# tesk_add_package_check(NAME): one check of the package that the fixture has built.
function(tesk_add_package_check name)
  tesk_add_check(package_${name} tests/package/debian.sh ${name} "${CMAKE_BINARY_DIR}")
  set_tests_properties(package_${name} PROPERTIES LABELS package FIXTURES_REQUIRED package)
endfunction()

# tesk_add_fixture(NAME [needed fixtures...]): started before the tests that need it, ended after them.
function(tesk_add_fixture name)
  foreach(action start stop)
    add_test(NAME ${name}.${action} COMMAND "${CMAKE_SOURCE_DIR}/tests/fixtures.sh" ${action} ${name} "${CMAKE_BINARY_DIR}")
    set_tests_properties(${name}.${action} PROPERTIES LABELS fixture TIMEOUT 600)
  endforeach()
  set_tests_properties(${name}.start PROPERTIES FIXTURES_SETUP ${name} FIXTURES_REQUIRED "${ARGN}")
  set_tests_properties(${name}.stop PROPERTIES FIXTURES_CLEANUP ${name} FIXTURES_REQUIRED "${ARGN}")
endfunction()

if(NOT WIN32 OR CMAKE_SIZEOF_VOID_P EQUAL 4)
  tesk_test_program(unit_tests unit)
endif()
if(WIN32)
  add_subdirectory("${CMAKE_SOURCE_DIR}/tests/windows" "${CMAKE_BINARY_DIR}/tests/windows")
  tesk_add_fixture(wine)
  tesk_add_fixture(scanners wine)
  tesk_add_fixture(desktop)
  tesk_add_cases(windows_tests SHARDS 1 LABELS long PREFIX wine-prefix FIXTURES wine scanners)
  tesk_add_cases(dialog_tests SHARDS 1 LABELS long PREFIX desktop-prefix FIXTURES desktop)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    tesk_add_cases(both_servers_tests SHARDS 1 LABELS long PREFIX wine-prefix FIXTURES wine scanners)
    set_tests_properties(both_servers_tests.0 PROPERTIES TIMEOUT 300)
    # What the scanners say and where the dialog's rows stand is the same in programs of every kind.
    tesk_leave_out(windows_tests.0 "Families.OpScan*:Families.SekonicPages*:Families.Vmr*:Families.AFault*:Families.*Readers*")
    tesk_leave_out(dialog_tests.0 "SetupDialogLayout.*:SetupDialogArea.*:SetupDialogScreen.*")
  else()
    tesk_add_cases(unit_tests SHARDS 1 LABELS unit PREFIX wine-prefix FIXTURES wine)
  endif()
  tesk_add_check(server_is_small cmake/check_server.sh size "$<TARGET_FILE:TeskReader99>")
  tesk_add_check(server_needs_only_windows cmake/check_server.sh imports "$<TARGET_FILE:TeskReader99>")
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    # The installer, which it builds of this preset and of "windows"; it counts its checks itself.
    add_test(NAME installer COMMAND "${CMAKE_SOURCE_DIR}/tests/package/installer.sh" "${CMAKE_BINARY_DIR}")
    set_tests_properties(installer PROPERTIES LABELS package TIMEOUT 900)
  endif()
else()
  tesk_test_program(process_tests process)
  target_compile_definitions(process_tests PRIVATE TESKREAD_BINARY="$<TARGET_FILE:teskread>")
  add_dependencies(process_tests teskread)
  tesk_add_cases(unit_tests SHARDS 2 LABELS unit)
  if(NOT TESKREAD_SANITIZE)
    tesk_add_cases(process_tests SHARDS 4 LABELS process)
    foreach(rule includes cycles systems format)
      tesk_add_check(house_${rule} cmake/check_house.sh ${rule})
    endforeach()
    tesk_add_package_check(build)
    set_tests_properties(package_build PROPERTIES FIXTURES_REQUIRED "" FIXTURES_SETUP package)
    foreach(check lintian life pages completion prefix)
      tesk_add_package_check(${check})
    endforeach()
  endif()
endif()
