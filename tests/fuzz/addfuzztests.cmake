# Run after vdfuzz is built: writes its seeds afresh and one ctest per target that it lists, as
# gtest_discover_tests does for the tests of a program. Each test starts from the seeds, the
# kept inputs of the target and what its earlier runs found, and stops after RUNS inputs; what
# fails is saved under FUZZ_DIR/found.
string(REPLACE "|" ";" ENVIRONMENT "${ENVIRONMENT}")
set(program_environment QT_QPA_PLATFORM=offscreen)

file(REMOVE_RECURSE ${FUZZ_DIR}/seeds)
execute_process(COMMAND ${CMAKE_COMMAND} -E env ${program_environment} ${FUZZER} --write-seeds ${FUZZ_DIR}/seeds
                RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${FUZZER} --write-seeds failed: ${result}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E env ${program_environment} ${FUZZER} --list
                OUTPUT_VARIABLE targets RESULT_VARIABLE result OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${FUZZER} --list failed: ${result}")
endif()
string(REPLACE "\n" ";" targets "${targets}")

file(MAKE_DIRECTORY ${FUZZ_DIR}/found)
set(tests "")
foreach(target ${targets})
  set(work ${FUZZ_DIR}/work/${target})
  file(MAKE_DIRECTORY ${work})
  set(corpora ${work} ${FUZZ_DIR}/seeds/${target})
  if(IS_DIRECTORY ${CORPUS_DIR}/${target})
    list(APPEND corpora ${CORPUS_DIR}/${target})
  endif()
  string(REPLACE ";" "]=] [=[" corpora "${corpora}")
  string(APPEND tests
    "add_test([=[fuzz.${target}]=] [=[${FUZZER}]=] -runs=${RUNS} -timeout=30 -print_final_stats=1 "
    "[=[-artifact_prefix=${FUZZ_DIR}/found/${target}-]=] [=[${corpora}]=])\n"
    "set_tests_properties([=[fuzz.${target}]=] PROPERTIES TIMEOUT 300 LABELS fuzz "
    "ENVIRONMENT [=[QT_QPA_PLATFORM=offscreen;VD_FUZZ_TARGET=${target};${ENVIRONMENT}]=])\n")
endforeach()
file(WRITE ${OUTPUT} "${tests}")
