# GoogleTest under the names GTest::gtest_main and GTest::gmock: the installed library, else (and
# always for Windows) built from the sources of the package "googletest".
if(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest QUIET)
endif()
if(NOT TARGET GTest::gtest_main OR NOT TARGET GTest::gmock)
  set(TRELV_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest's sources")
  if(EXISTS "${TRELV_GOOGLETEST_SOURCE}/CMakeLists.txt" AND NOT TARGET GTest::gtest)
    set(INSTALL_GTEST OFF)
    set(BUILD_GMOCK ON)
    set(gtest_disable_pthreads ${WIN32})
    # The options above count although the sources ask for an older CMake.
    set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
    enable_language(C)
    add_subdirectory("${TRELV_GOOGLETEST_SOURCE}" "${PROJECT_BINARY_DIR}/googletest"
                     EXCLUDE_FROM_ALL SYSTEM)
    if(WIN32)
      # Its own way of being fitted to a compiler without threads; before its own folders, which
      # are system ones to those who link it.
      target_include_directories(gtest BEFORE PRIVATE "${PROJECT_SOURCE_DIR}/cmake/googletest")
      target_compile_options(gtest INTERFACE "-I${PROJECT_SOURCE_DIR}/cmake/googletest")
    endif()
    foreach(library gtest gtest_main gmock)
      if(NOT TARGET GTest::${library})
        add_library(GTest::${library} ALIAS ${library})
      endif()
    endforeach()
  endif()
endif()
if(NOT TARGET GTest::gtest_main)
  message(FATAL_ERROR "GoogleTest is missing: run tools/install native")
endif()
