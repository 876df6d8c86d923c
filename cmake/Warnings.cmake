# The warnings that this project's own code is built with.
option(ZVG_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)

function(zvg_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion
                         -Wnon-virtual-dtor -Woverloaded-virtual
                         $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>)
  if(CMAKE_UNITY_BUILD)
    # Which takes every file but the outermost for a header.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
  if(ZVG_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
