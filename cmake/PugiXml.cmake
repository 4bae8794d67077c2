# The XML library of the configuration store: natively the installed one, for Windows built from the
# distribution's source package, which tools/debian-source fetches.
if(NOT WIN32)
  find_package(pugixml QUIET)
  if(NOT TARGET pugixml::pugixml)
    message(STATUS "pugixml is not installed: the XML configuration store is left out")
  endif()
else()
  execute_process(
    COMMAND "${PROJECT_SOURCE_DIR}/tools/debian-source" --check pugixml
    OUTPUT_VARIABLE TRELV_PUGIXML_SOURCE
    OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE missing)
  if(missing)
    message(FATAL_ERROR "the sources of pugixml are missing: run tools/install windows")
  endif()
  add_library(pugixml STATIC "${TRELV_PUGIXML_SOURCE}/src/pugixml.cpp")
  target_include_directories(pugixml SYSTEM PUBLIC "${TRELV_PUGIXML_SOURCE}/src")
  # Without its stream functions the program needs no stream library: half of its size.
  target_compile_definitions(pugixml PUBLIC PUGIXML_NO_XPATH PUGIXML_NO_STL PUGIXML_NO_EXCEPTIONS)
  # It raises nothing then. Without unwind tables, which hold on to every function of a file, the
  # linker drops those that nobody calls.
  target_compile_options(
    pugixml PRIVATE -fno-exceptions -fno-asynchronous-unwind-tables -include
                    "${PROJECT_SOURCE_DIR}/cmake/pugixml/NoFloatingNumbers.h")
  add_library(pugixml::pugixml ALIAS pugixml)
endif()
