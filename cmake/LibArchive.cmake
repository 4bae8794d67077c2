# The libraries of the pack decoder: the archive library's tar reader and zlib. Natively the installed
# ones; for Windows zlib's Windows library and, of the distribution's source package of the archive
# library, the files that reading tar needs. TRELV_DECODER_LIBRARIES is empty where they are missing.
set(TRELV_DECODER_LIBRARIES)
if(NOT WIN32)
  find_package(LibArchive QUIET)
  find_package(ZLIB QUIET)
  if(TARGET LibArchive::LibArchive AND TARGET ZLIB::ZLIB)
    set(TRELV_DECODER_LIBRARIES LibArchive::LibArchive ZLIB::ZLIB)
    set(found ON)
  else()
    set(found OFF)
    message(STATUS "libarchive or zlib is not installed: the pack decoder is left out")
  endif()
  # For the one who counts the tests that are left out.
  set(TRELV_DECODER_LIBRARIES_FOUND ${found} CACHE BOOL "the pack decoder can be built" FORCE)
  return()
endif()

execute_process(
  COMMAND "${PROJECT_SOURCE_DIR}/tools/debian-source" --check libarchive
  OUTPUT_VARIABLE TRELV_LIBARCHIVE_SOURCE
  OUTPUT_STRIP_TRAILING_WHITESPACE
  RESULT_VARIABLE missing)
find_library(TRELV_ZLIB libz.a)
if(missing OR NOT TRELV_ZLIB)
  message(FATAL_ERROR "the sources of libarchive or zlib are missing: run tools/install windows")
endif()
enable_language(C)
set(sources
    acl check_magic entry entry_sparse entry_xattr options read read_add_passphrase read_set_options
    read_support_format_tar string string_sprintf util virtual windows)
list(TRANSFORM sources PREPEND "${TRELV_LIBARCHIVE_SOURCE}/libarchive/archive_")
list(TRANSFORM sources APPEND ".c")
add_library(tararchive STATIC ${sources})
target_include_directories(tararchive SYSTEM PUBLIC "${TRELV_LIBARCHIVE_SOURCE}/libarchive")
target_include_directories(tararchive PRIVATE "${PROJECT_SOURCE_DIR}/cmake/libarchive")
target_compile_definitions(tararchive PUBLIC LIBARCHIVE_STATIC PRIVATE HAVE_CONFIG_H WINVER=0x0501
                                                                       _WIN32_WINNT=0x0501)
target_compile_options(tararchive PRIVATE -w)
set(TRELV_DECODER_LIBRARIES tararchive "${TRELV_ZLIB}")
