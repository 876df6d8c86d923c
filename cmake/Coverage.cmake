# In a build that counts (preset `coverage`), the target `coverage` runs the tests, prints how much
# of the libraries and the tool they reach and fails where that is too little.
if(NOT ZVG_BUILD_TESTS OR NOT CMAKE_CXX_FLAGS MATCHES "--coverage")
  return()
endif()
find_program(ZVG_GCOVR gcovr REQUIRED)

# Branches that the compiler adds for exceptions say nothing about the code. Left out are tests of
# what counting itself changes: time, and the files and the cage of a process. Foreign models are
# read behind the libraries of others; what is done with them there has tests, but no measure.
add_custom_target(coverage
  COMMAND find ${PROJECT_BINARY_DIR} -name *.gcda -delete
  COMMAND ${CMAKE_CTEST_COMMAND} --test-dir ${PROJECT_BINARY_DIR} --output-on-failure -j2
          -E "HostileFiles|FaultsHaveTheirStatus|TheChildSeesNothing|export_check|second_reader"
  COMMAND ${ZVG_GCOVR} --root ${PROJECT_SOURCE_DIR} --object-directory ${PROJECT_BINARY_DIR}
          --filter ${PROJECT_SOURCE_DIR}/block/ --filter ${PROJECT_SOURCE_DIR}/model/
          --filter ${PROJECT_SOURCE_DIR}/tools/ --exclude ${PROJECT_SOURCE_DIR}/model/import/ifc/
          --exclude ${PROJECT_SOURCE_DIR}/model/import/mesh/
          --exclude-throw-branches --exclude-unreachable-branches --print-summary
          --json ${PROJECT_BINARY_DIR}/coverage.json --txt ${PROJECT_BINARY_DIR}/coverage.txt
          --fail-under-line 95 ${PROJECT_BINARY_DIR}
  # Of the block library alone, branches as well.
  COMMAND ${ZVG_GCOVR} --root ${PROJECT_SOURCE_DIR} --add-tracefile ${PROJECT_BINARY_DIR}/coverage.json
          --filter ${PROJECT_SOURCE_DIR}/block/ --exclude-throw-branches
          --exclude-unreachable-branches --print-summary --txt ${PROJECT_BINARY_DIR}/coverage-block.txt
          --fail-under-line 95 --fail-under-branch 85
  WORKING_DIRECTORY ${PROJECT_BINARY_DIR} USES_TERMINAL VERBATIM)
get_property(tests DIRECTORY ${PROJECT_SOURCE_DIR}/tests PROPERTY BUILDSYSTEM_TARGETS)
add_dependencies(coverage ${tests})
