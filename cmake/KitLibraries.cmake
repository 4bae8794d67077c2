# The libraries of the second program beside the C library's reader of command lines: JSON (nlohmann),
# archives. The first is headers of the distribution, the same for Windows: there its folder alone is
# shown to the compiler, so that no other header of this system gets in. TRELV_KIT_LIBRARIES is empty
# where one is missing.
set(TRELV_KIT_LIBRARIES)
find_path(TRELV_JSON nlohmann/json.hpp PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
if(TRELV_JSON AND TRELV_ARCHIVE_LIBRARIES)
  set(headers "${PROJECT_BINARY_DIR}/kit-headers")
  file(MAKE_DIRECTORY "${headers}")
  file(CREATE_LINK "${TRELV_JSON}/nlohmann" "${headers}/nlohmann" SYMBOLIC)
  add_library(kit_headers INTERFACE)
  target_include_directories(kit_headers SYSTEM INTERFACE "${headers}")
  # Documents are made and read as texts: without its stream functions the program needs no stream
  # library, a third of its size.
  target_compile_definitions(kit_headers INTERFACE JSON_NO_IO=1)
  set(TRELV_KIT_LIBRARIES kit_headers ${TRELV_ARCHIVE_LIBRARIES})
elseif(WIN32)
  message(FATAL_ERROR "the headers of nlohmann's JSON are missing: run tools/install windows")
else()
  message(STATUS "nlohmann's JSON or libarchive is not installed: trelv is left out")
endif()
if(TRELV_KIT_LIBRARIES)
  set(found ON)
else()
  set(found OFF)
endif()
# For the one who counts the tests that are left out.
set(TRELV_KIT_LIBRARIES_FOUND ${found} CACHE BOOL "the second program can be built" FORCE)
