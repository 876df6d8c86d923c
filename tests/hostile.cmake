# Tests of faults, hostile files and threads, and the replay of the fuzzers' seeds.
set(ZVG_HOSTILE_SUPPORT ${CMAKE_CURRENT_LIST_DIR}/hostile_support.cpp
    ${CMAKE_CURRENT_LIST_DIR}/hostile_sample.cpp)

foreach(name faults_test hostile_test threads_test)
  zvg_add_test(${name})
  target_sources(${name} PRIVATE ${ZVG_HOSTILE_SUPPORT})
endforeach()
foreach(name faults_test hostile_test)
  target_sources(${name} PRIVATE ${CMAKE_CURRENT_LIST_DIR}/alloc_hooks.cpp)
endforeach()

foreach(fuzzer file blocks calls)
  set(replay fuzz_${fuzzer}_replay)
  add_executable(${replay} ${CMAKE_CURRENT_LIST_DIR}/../fuzz/fuzz_${fuzzer}.cpp
                 ${CMAKE_CURRENT_LIST_DIR}/../fuzz/replay.cpp ${ZVG_HOSTILE_SUPPORT})
  target_link_libraries(${replay} PRIVATE ZVSmartZvg::ZVSmartZvg)
  target_include_directories(${replay} PRIVATE ${CMAKE_CURRENT_LIST_DIR})
  zvg_set_warnings(${replay})
  add_test(NAME ${replay} COMMAND ${replay} ${CMAKE_CURRENT_LIST_DIR}/../fuzz/seeds/${fuzzer})
endforeach()
