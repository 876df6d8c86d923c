# What the tests and the fuzzers share, and the program that writes the fuzzers' seeds.
include_guard(GLOBAL)

add_library(zvg_test_support STATIC ${CMAKE_CURRENT_LIST_DIR}/support.cpp
            ${CMAKE_CURRENT_LIST_DIR}/support_answers.cpp
            ${CMAKE_CURRENT_LIST_DIR}/support_sample.cpp)
target_link_libraries(zvg_test_support PUBLIC ZVSmartZvg::ZVSmartZvg)
target_include_directories(zvg_test_support PUBLIC ${CMAKE_CURRENT_LIST_DIR})
add_executable(write_seeds ${CMAKE_CURRENT_LIST_DIR}/../fuzz/write_seeds.cpp)
target_link_libraries(write_seeds PRIVATE zvg_test_support)

zvg_set_warnings(zvg_test_support)
zvg_set_warnings(write_seeds)
