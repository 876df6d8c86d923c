# What the tests and the fuzzers share, and the program that writes the fuzzers' seeds.
include_guard(GLOBAL)

add_library(zvg_test_support STATIC ${CMAKE_CURRENT_LIST_DIR}/support.cpp
            ${CMAKE_CURRENT_LIST_DIR}/support_answers.cpp
            ${CMAKE_CURRENT_LIST_DIR}/support_sample.cpp)
target_link_libraries(zvg_test_support PUBLIC ZVSmartZvg::ZVSmartZvg)
target_include_directories(zvg_test_support PUBLIC ${CMAKE_CURRENT_LIST_DIR})
add_executable(write_seeds ${CMAKE_CURRENT_LIST_DIR}/../fuzz/write_seeds.cpp)
target_link_libraries(write_seeds PRIVATE zvg_test_support)

# The importers' own code, without the libraries behind them.
include(${CMAKE_CURRENT_LIST_DIR}/../tools/zvg/import/own_code.cmake)
list(TRANSFORM ZVG_IMPORT_OWN_CODE PREPEND ${CMAKE_CURRENT_LIST_DIR}/../tools/zvg/import/)
add_library(zvg_import_own STATIC ${ZVG_IMPORT_OWN_CODE}
            ${CMAKE_CURRENT_LIST_DIR}/../tools/zvg/text/Utf8.cpp)
target_include_directories(zvg_import_own PUBLIC ${CMAKE_CURRENT_LIST_DIR}/..)
zvg_set_warnings(zvg_import_own)

zvg_set_warnings(zvg_test_support)
zvg_set_warnings(write_seeds)
