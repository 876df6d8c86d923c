# Counts what of the libraries and the tool runs (preset `asan`); .ci/check-coverage tells how much.
# The counts are kept in mapped files all along: a process that dies has counted too, and one in a
# cage need not write at its end.
option(ZVG_COUNT_COVERAGE "Count what runs (clang)" OFF)
if(NOT ZVG_COUNT_COVERAGE)
  return()
endif()
# Templates of the system's headers would be most of what is counted, and are never told of.
file(CONFIGURE OUTPUT counted.list CONTENT "!src:/usr/bin/*\n!src:/usr/include/*\n!src:/usr/lib/*\n")
set(counting -fprofile-instr-generate=${PROJECT_BINARY_DIR}/counts/%m%c.profraw)
add_compile_options(${counting} -fprofile-list=${PROJECT_BINARY_DIR}/counted.list
                    -fcoverage-mapping "SHELL:-mllvm -runtime-counter-relocation")
add_link_options(${counting})
