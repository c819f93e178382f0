# ctest includes this file for each program of kaz_add_tests. It adds the program's tests to ctest.
#
# One process per suite, because most of a short test's time is the start of its process. With KAZ_EACH_TEST set, one
# process per test, so that a test can be chosen by its name. A program with more than one shard is one test, or one per
# test.

# kaz_list_tests(PROGRAM TIMEOUT COST MEASURED SHARDS [EMULATOR...])
function(kaz_list_tests program timeout cost measured shards)
  cmake_path(GET program FILENAME name)
  # ctest prefers a given COST to what it measured. MEASURED is the file with that.
  if(EXISTS "${measured}")
    set(cost 0)
  endif()
  if(NOT EXISTS "${program}")
    add_test(${name}.IsBuilt "${program}")
    return()
  endif()
  if(shards GREATER 1 AND NOT DEFINED ENV{KAZ_EACH_TEST})
    add_test(${name} "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../tests/in_shards" ${shards} ${ARGN} "${program}")
    set_tests_properties(${name} PROPERTIES TIMEOUT ${timeout} COST ${cost})
    return()
  endif()
  set(list "${program}.tests")
  if(NOT EXISTS "${list}" OR "${program}" IS_NEWER_THAN "${list}")
    # Without the text about parameters, which may be any text.
    execute_process(COMMAND ${ARGN} "${program}" --gtest_list_tests COMMAND sed "s/ *#.*//"
      OUTPUT_FILE "${list}" RESULTS_VARIABLE codes)
    if(NOT codes STREQUAL "0;0")
      file(REMOVE "${list}")
      message(FATAL_ERROR "${program} does not tell which tests it has: ${codes}")
    endif()
  endif()
  file(STRINGS "${list}" lines REGEX "^[A-Za-z0-9_/]+\\.|^  ")
  foreach(line IN LISTS lines)
    if(NOT line MATCHES "^  ")
      set(suite "${line}")
    elseif(DEFINED ENV{KAZ_EACH_TEST})
      string(STRIP "${line}" test)
      list(APPEND tests "${suite}${test}")
    else()
      list(APPEND tests "${suite}*")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES tests)
  foreach(test IN LISTS tests)
    # ctest keeps what each test took under its name, and programs have suites of the same name.
    string(REGEX REPLACE "^(.*)\\.\\*$" "${name}.\\1" named "${test}")
    add_test("${named}" ${ARGN} "${program}" "--gtest_filter=${test}")
    set_tests_properties("${named}" PROPERTIES TIMEOUT ${timeout} COST ${cost})
  endforeach()
endfunction()
