# The libraries of the pack decoder: the archive library's tar reader and zlib. Natively the installed
# ones; for Windows zlib's Windows library and, of the distribution's source package of the archive
# library, the files that reading tar needs. TRELV_DECODER_LIBRARIES is empty where they are missing.
# TRELV_ARCHIVE_LIBRARIES is what the second program has in their place: zip and ISO too, and writing.
set(TRELV_DECODER_LIBRARIES)
set(TRELV_ARCHIVE_LIBRARIES)
if(NOT WIN32)
  find_package(LibArchive QUIET)
  find_package(ZLIB QUIET)
  if(TARGET LibArchive::LibArchive AND TARGET ZLIB::ZLIB)
    set(TRELV_DECODER_LIBRARIES LibArchive::LibArchive ZLIB::ZLIB)
    set(TRELV_ARCHIVE_LIBRARIES ${TRELV_DECODER_LIBRARIES})
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

# trelv_archive(<target> <part>...): a library of these parts of the archive library.
function(trelv_archive target)
  list(TRANSFORM ARGN PREPEND "${TRELV_LIBARCHIVE_SOURCE}/libarchive/archive_" OUTPUT_VARIABLE sources)
  list(TRANSFORM sources APPEND ".c")
  add_library(${target} STATIC ${sources})
  target_include_directories(${target} SYSTEM PUBLIC "${TRELV_LIBARCHIVE_SOURCE}/libarchive")
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/libarchive")
  target_compile_definitions(${target} PUBLIC LIBARCHIVE_STATIC PRIVATE HAVE_CONFIG_H WINVER=0x0501
                                                                        _WIN32_WINNT=0x0501)
  target_compile_options(${target} PRIVATE -w)
endfunction()

set(reading
    acl check_magic entry entry_sparse entry_xattr options read read_add_passphrase read_set_options
    read_support_format_tar string string_sprintf util virtual windows)
trelv_archive(tararchive ${reading})
set(TRELV_DECODER_LIBRARIES tararchive "${TRELV_ZLIB}")

# A library of its own, so that the decoder stays as small as it is.
trelv_archive(
  packarchive ${reading} cryptor hmac ppmd8 rb random read_support_format_zip
  read_support_format_iso9660 write write_add_filter_gzip write_set_format_iso9660
  write_set_format_pax write_set_format_ustar write_set_format_zip write_set_options
  write_set_passphrase)
target_sources(packarchive PRIVATE "${PROJECT_SOURCE_DIR}/cmake/libarchive/unsupported.c")
target_compile_definitions(packarchive PRIVATE HAVE_ZLIB_H=1 HAVE_LIBZ=1)
set(TRELV_ARCHIVE_LIBRARIES packarchive "${TRELV_ZLIB}")
