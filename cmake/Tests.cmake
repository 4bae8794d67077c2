# The tests, by folder. Natively: unit, contract against the simulated machine, sweep, fuzz. For
# Windows: contract against Win32, the helper programs and libraries of the scenarios, benchmarks.
include(GoogleTestLibrary)

# trelv_test(<name> SOURCES <pattern>... [EXCEPT <regex>] LINKS <target>...): one test program of all
# sources that the patterns find, under tests/; none where nothing is found.
function(trelv_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "EXCEPT" "SOURCES;LINKS")
  list(TRANSFORM test_SOURCES PREPEND "${PROJECT_SOURCE_DIR}/tests/")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS LIST_DIRECTORIES false ${test_SOURCES})
  if(test_EXCEPT)
    list(FILTER sources EXCLUDE REGEX "${test_EXCEPT}")
  endif()
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  trelv_test_target(${name} LINKS ${test_LINKS} GTest::gtest_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
  add_test(NAME ${name} COMMAND ${name})
endfunction()

function(trelv_test_target name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "" "LINKS")
  target_link_libraries(${name} PUBLIC ${test_LINKS} trelv_flags GTest::gmock)
  # GoogleTest's headers are most of what a test file compiles: they are read once for all programs.
  if(TARGET test_support AND NOT name STREQUAL test_support)
    target_precompile_headers(${name} REUSE_FROM test_support)
  else()
    target_precompile_headers(${name} PRIVATE <gmock/gmock.h> <gtest/gtest.h> <string> <vector>)
  endif()
  # Tests are compiled more often than they are run: neither for Windows nor with sanitizers are they
  # optimised.
  if(WIN32 OR TRELV_SANITIZE)
    target_compile_options(${name} PRIVATE -O0)
  endif()
  # Optimised, GCC 12 sees writes into the small buffer of a std::string that never happen.
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_FLAGS MATCHES "-O2")
    target_compile_options(${name} PRIVATE -Wno-stringop-overflow)
  endif()
  if(TRELV_SANITIZE)
    # The checks of each pointer, a third of the work, are left to the program and the simulated
    # machine. A null pointer ends a test with or without them.
    target_compile_options(${name} PRIVATE -fno-sanitize=null,alignment,object-size,vptr)
  endif()
  # Test files are many and small: their own folder is where their helpers stand.
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}/tests")
endfunction()

set(not_here "^$")
if(NOT TARGET pugixml::pugixml)
  string(APPEND not_here "|/XmlStore[^/]*Test\\.cpp$")
endif()
if(NOT TRELV_DECODER_LIBRARIES)
  string(APPEND not_here "|/decoder/(Decoder|Extraction|GzipReader|TarReader)[^/]*\\.cpp$")
endif()
set(kit_not_here "^$")
if(NOT TRELV_KIT_LIBRARIES)
  set(kit_not_here "/unit/kit/")
endif()

if(WIN32)
  trelv_test(contract_win32 SOURCES "contract/*.cpp" EXCEPT "/contract/sim/"
             LINKS main xmlstore win32 win32_resources sim)
  if(TARGET contract_win32)
    trelv_check_delay_load(contract_win32)
  endif()
  trelv_small_programs(tests/scenario/programs "${PROJECT_BINARY_DIR}/tests/programs")
  trelv_small_libraries(tests/scenario/libraries "${PROJECT_BINARY_DIR}/tests/libraries")
  # For the scenarios: the product report without the forms that ask for it, and a program that does
  # nothing but write into the configuration store.
  add_executable(inventory_report tests/scenario/inventory/report.cpp src/app/WindowsProgram.cpp)
  add_executable(store_writer tests/scenario/store/writer.cpp)
  foreach(program IN ITEMS inventory_report store_writer)
    string(REGEX REPLACE ".*_" "" file_name ${program})
    target_link_libraries(${program} PRIVATE main xmlstore win32 win32_resources)
    target_link_options(${program} PRIVATE -s)
    set_target_properties(${program} PROPERTIES OUTPUT_NAME ${file_name} RUNTIME_OUTPUT_DIRECTORY
                                                "${PROJECT_BINARY_DIR}/tests/programs")
  endforeach()
  # Failures of the C++ library, with the manager's own functions that raise them.
  add_executable(library_failures_program tests/scenario/failures/failures.cpp)
  target_link_libraries(library_failures_program PRIVATE base library_failures)
  target_link_options(library_failures_program PRIVATE -s)
  set_target_properties(library_failures_program PROPERTIES OUTPUT_NAME failures RUNTIME_OUTPUT_DIRECTORY
                                                            "${PROJECT_BINARY_DIR}/tests/programs")
  # tools/bench: what the manager is compared with. The naive peer is the manager itself, except for
  # the unit that keeps ini files: the linker takes its own instead of the one in the library.
  set(benches "${PROJECT_BINARY_DIR}/tests/bench")
  foreach(bench IN ITEMS empty starter log_only sketch form runner)
    set(source "${PROJECT_SOURCE_DIR}/tests/bench/${bench}.cpp")
    add_executable(bench_${bench} "${source}")
    trelv_entry_point(bench_${bench} "${source}")
    target_link_libraries(bench_${bench} PRIVATE trelv_flags advapi32 user32 psapi)
    target_link_options(bench_${bench} PRIVATE -s)
    set_target_properties(bench_${bench} PROPERTIES OUTPUT_NAME "${bench}"
                                                    RUNTIME_OUTPUT_DIRECTORY "${benches}")
  endforeach()
  target_link_libraries(bench_form PRIVATE win32_resources comctl32)
  file(GLOB app_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/app/*.cpp")
  add_executable(bench_naive WIN32 tests/bench/naive.cpp ${app_sources})
  trelv_entry_point(bench_naive ${app_sources})
  target_link_libraries(bench_naive PRIVATE main xmlstore win32 win32_resources app_resources
                                            library_failures)
  target_link_options(bench_naive PRIVATE -s)
  set_target_properties(bench_naive PROPERTIES OUTPUT_NAME naive
                                               RUNTIME_OUTPUT_DIRECTORY "${benches}")
else()
  # What tests of several folders share.
  file(GLOB_RECURSE support CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/support/*.cpp")
  list(FILTER support EXCLUDE REGEX "${not_here}")
  add_library(test_support STATIC ${support})
  trelv_test_target(test_support LINKS main xmlstore decoder sim)
  trelv_test(unit_tests SOURCES "unit/*.cpp" EXCEPT "${not_here}|/unit/(kit|overlay|posix)/"
             LINKS test_support main xmlstore decoder sim)
  # The second program's, which need more libraries.
  if(TRELV_KIT_LIBRARIES)
    set(kit_rooms kit)
  endif()
  trelv_test(kit_tests SOURCES "unit/kit/*.cpp" "unit/overlay/*.cpp" "unit/posix/*.cpp"
             EXCEPT "${kit_not_here}" LINKS ${kit_rooms} test_support main xmlstore overlay posix sim)
  # These read the sources, the documents and whole logs.
  set_source_files_properties(
    "${PROJECT_SOURCE_DIR}/tests/fuzz/KeptInputsTest.cpp"
    "${PROJECT_SOURCE_DIR}/tests/support/Golden.cpp"
    "${PROJECT_SOURCE_DIR}/tests/unit/kit/LintTest.cpp"
    "${PROJECT_SOURCE_DIR}/tests/unit/win32/DialogControlsTest.cpp"
    "${PROJECT_SOURCE_DIR}/tests/unit/records/MediumFilesTest.cpp"
    PROPERTIES COMPILE_DEFINITIONS TRELV_PROJECT_FOLDER="${PROJECT_SOURCE_DIR}")
  trelv_test(contract_sim SOURCES "contract/*.cpp" EXCEPT "/contract/win32/" LINKS main sim)
  trelv_test(sweep_tests SOURCES "sweep/*.cpp" "prove/Invariants.cpp"
             LINKS test_support main xmlstore sim)
  # tools/prove, which builds it optimised; ./test makes some of its runs with the sanitizers. The
  # second program takes part.
  if(TRELV_KIT_LIBRARIES)
    file(GLOB prove_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/prove/*.cpp")
    add_executable(prove ${prove_sources} "${PROJECT_SOURCE_DIR}/tests/sweep/Sweep.cpp")
    trelv_test_target(prove LINKS ${kit_rooms} test_support main xmlstore sim)
    set_target_properties(prove PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
  endif()
  # All targets of cmake/Fuzz.cmake in one program, on the inputs that are kept.
  if(TRELV_KIT_LIBRARIES AND TARGET pugixml::pugixml)
    trelv_test(fuzz_tests SOURCES "fuzz/*.cpp" EXCEPT "/fuzz/(Entry|LargeBlocks|[A-Za-z]*Mutation)\\.cpp$"
               LINKS kit test_support main xmlstore decoder sim)
  endif()
  # tools/bench-decoder: the decoder on this system's own files.
  if(TRELV_DECODER_LIBRARIES)
    file(GLOB decoder_bench CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/bench/decoder/*.cpp")
    add_executable(bench_decoder EXCLUDE_FROM_ALL ${decoder_bench})
    target_include_directories(bench_decoder PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(bench_decoder PRIVATE decoder)
  endif()
endif()
