# The decoder of liblzma, out of the sources of xz that ZVG_XZ_SOURCES names. The CMake files of xz
# insist on threads.
set(ZVG_XZ_SOURCES "" CACHE PATH "The unpacked sources of xz 5.4")
if(NOT EXISTS ${ZVG_XZ_SOURCES}/src/liblzma/api/lzma.h)
  message(FATAL_ERROR "ZVG_XZ_SOURCES names no sources of xz: '${ZVG_XZ_SOURCES}'")
endif()
set(LIBLZMA_VERSION 5.4.1)
set(LibLZMA_FOUND TRUE)

add_library(lzma_decoder STATIC)
foreach(file
    check/check check/crc32_fast check/crc64_fast check/sha256
    common/block_decoder common/block_header_decoder common/block_util common/common
    common/filter_common common/filter_decoder common/filter_flags_decoder common/index_hash
    common/stream_decoder common/stream_flags_common common/stream_flags_decoder
    common/vli_decoder common/vli_size
    delta/delta_common delta/delta_decoder
    lz/lz_decoder lzma/lzma2_decoder lzma/lzma_decoder
    simple/arm simple/arm64 simple/armthumb simple/ia64 simple/powerpc simple/simple_coder
    simple/simple_decoder simple/sparc simple/x86)
  target_sources(lzma_decoder PRIVATE ${ZVG_XZ_SOURCES}/src/liblzma/${file}.c)
endforeach()
target_sources(lzma_decoder PRIVATE ${CMAKE_CURRENT_LIST_DIR}/../CheckTables.c)
set(rooms ${ZVG_XZ_SOURCES}/src/common)
foreach(room api check common delta lz lzma rangecoder simple)
  list(APPEND rooms ${ZVG_XZ_SOURCES}/src/liblzma/${room})
endforeach()
target_include_directories(lzma_decoder PRIVATE ${rooms}
                           INTERFACE ${ZVG_XZ_SOURCES}/src/liblzma/api)
# What its configure script would find, and all filters and checks that a file may use.
set(has STDBOOL_H STDINT_H INTTYPES_H STRING_H LIMITS_H VISIBILITY DECODERS DECODER_LZMA2
    DECODER_DELTA DECODER_X86 DECODER_ARM DECODER_ARM64 DECODER_ARMTHUMB DECODER_IA64
    DECODER_POWERPC DECODER_SPARC CHECK_CRC32 CHECK_CRC64 CHECK_SHA256)
list(TRANSFORM has REPLACE "(.+)" "HAVE_\\1=1")
target_compile_definitions(lzma_decoder PRIVATE ${has} TUKLIB_FAST_UNALIGNED_ACCESS=1
                           TUKLIB_SYMBOL_PREFIX=lzma_ SIZEOF_SIZE_T=4
                           PACKAGE_NAME="xz" PACKAGE_BUGREPORT="" PACKAGE_URL=""
                           INTERFACE LZMA_API_STATIC)
set_target_properties(lzma_decoder PROPERTIES UNITY_BUILD OFF)
target_compile_options(lzma_decoder PRIVATE -std=gnu99 -w)
# What runs once a block, or never, is small.
foreach(file check/sha256 common/block_header_decoder common/filter_common common/index_hash
    common/stream_decoder common/stream_flags_decoder simple/arm simple/arm64 simple/armthumb
    simple/ia64 simple/powerpc simple/simple_coder simple/sparc simple/x86)
  set_source_files_properties(${ZVG_XZ_SOURCES}/src/liblzma/${file}.c PROPERTIES COMPILE_OPTIONS -Os)
endforeach()
add_library(LibLZMA::LibLZMA ALIAS lzma_decoder)
