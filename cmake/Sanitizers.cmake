# Under clang's address sanitizer (preset `asan`) libraries and programs share one runtime, which is
# found where the compiler is: what the tests preload takes effect between the two.
if(NOT CMAKE_CXX_FLAGS MATCHES "-shared-libasan")
  return()
endif()
execute_process(
  COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libclang_rt.asan-${CMAKE_SYSTEM_PROCESSOR}.so
  OUTPUT_VARIABLE ZVG_ASAN_RUNTIME OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(folder ${ZVG_ASAN_RUNTIME} DIRECTORY)
add_link_options(-Wl,-rpath,${folder})
# As g++ says it, and newer clang.
add_compile_definitions(__SANITIZE_ADDRESS__=1)
