# How everything of ours is compiled. Warnings are errors with both compilers.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

option(TRELV_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
option(TRELV_FUZZ "Build the programs that look for inputs, with clang" OFF)

# Compiles again only what no build folder of any checkout has compiled before, where ccache is
# installed.
find_program(TRELV_CCACHE ccache)
if(TRELV_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env CCACHE_NOHASHDIR=1
      "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_SLOPPINESS=pch_defines,time_macros
      "${TRELV_CCACHE}")
endif()

# What every target of ours compiles and links with; libraries of others are built without it.
add_library(trelv_flags INTERFACE)
target_include_directories(trelv_flags INTERFACE "${PROJECT_SOURCE_DIR}/src" "${PROJECT_SOURCE_DIR}")
target_compile_options(trelv_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
# GCC 12 sees overlaps and bounds that are not there in the inlined operator+ of std::string. The
# sanitizers look for the real ones.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  target_compile_options(trelv_flags INTERFACE -Wno-restrict -Wno-array-bounds)
endif()

if(TRELV_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(TRELV_FUZZ)
  # Tells libFuzzer which parts of the program an input has reached; branches within the standard
  # library tell nothing of a format. What only repeats in smaller steps what AddressSanitizer sees
  # costs half of all executions: the other sanitized build has it, on the kept inputs. The file has
  # its relative path, by which ccache knows what another checkout compiled.
  file(RELATIVE_PATH ignored "${PROJECT_BINARY_DIR}" "${PROJECT_SOURCE_DIR}/cmake/fuzz-ignored.txt")
  add_compile_options(-fsanitize=fuzzer-no-link -fno-sanitize-coverage=stack-depth
                      "-fsanitize-coverage-ignorelist=${ignored}"
                      -fno-sanitize=alignment,null,object-size,pointer-overflow,vptr
                      -fsanitize-address-use-after-return=never)
endif()

if(WIN32)
  # Windows XP is the oldest system that has to load the program: later functions stay undeclared,
  # so that none of them gets into the import table.
  target_compile_definitions(
    trelv_flags INTERFACE WINVER=0x0501 _WIN32_WINNT=0x0501 _WIN32_IE=0x0600 UNICODE _UNICODE
                          WIN32_LEAN_AND_MEAN NOMINMAX STRICT)
  # One commit gives the same bytes in every folder: neither paths nor the time of day get in.
  add_compile_options(-ffunction-sections -fdata-sections "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
  # Who ends by an exception that nobody catches has no console to read its name on: the handler that
  # would write it, with all that takes names of C++ apart, stays out.
  add_link_options(
    -static
    -Wl,--gc-sections
    -Wl,--no-insert-timestamp
    -Wl,--defsym,__ZN9__gnu_cxx27__verbose_terminate_handlerEv=_abort
    -Wl,--major-os-version=5,--minor-os-version=1
    -Wl,--major-subsystem-version=5,--minor-subsystem-version=1)
  set(TRELV_WINDOWS_LIBRARIES
      user32 gdi32 comctl32 comdlg32 advapi32 shell32 ole32 oleaut32 uuid mpr version netapi32
      userenv winspool)
endif()
