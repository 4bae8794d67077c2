# Coverage-guided fuzzing: one program a format, of the rooms that it needs, all built with clang and
# its sanitizers (preset "fuzz"). Each looks for inputs that break the rules of its file in tests/fuzz.
include(GoogleTestLibrary)

# What the decoder's targets share with its unit tests, and the archive's bytes.
add_library(fuzz_packs STATIC tests/support/decoder/DecoderPacks.cpp
                              tests/support/decoder/MemoryTree.cpp tests/fuzz/PackBytes.cpp)
target_link_libraries(fuzz_packs PUBLIC decoder GTest::gtest)
target_include_directories(fuzz_packs PUBLIC tests)

# The readers of the second program, without the libraries that its verbs need.
trelv_room(kit_readers FOLDERS kit
           ONLY Description.cpp Failure.cpp GivenPath.cpp Moment.cpp StartLog.cpp TextLines.cpp
           LINKS startup decoder)

add_custom_target(fuzz_targets)

# trelv_fuzz(<name> <file> [SOURCES <file>...] LINKS <target>...): the program of check<file>().
function(trelv_fuzz name file)
  cmake_parse_arguments(PARSE_ARGV 2 fuzz "" "" "SOURCES;LINKS")
  list(TRANSFORM fuzz_SOURCES PREPEND tests/fuzz/)
  add_executable(fuzz_${name} tests/fuzz/Entry.cpp tests/fuzz/${file}.cpp ${fuzz_SOURCES})
  target_compile_definitions(fuzz_${name} PRIVATE TRELV_FUZZ_TARGET=check${file})
  target_include_directories(fuzz_${name} PRIVATE tests)
  target_link_libraries(fuzz_${name} PRIVATE ${fuzz_LINKS})
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  set_target_properties(fuzz_${name} PROPERTIES OUTPUT_NAME ${name}
                                                RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/fuzz")
  add_dependencies(fuzz_targets fuzz_${name})
endfunction()

trelv_fuzz(command_line CommandLine LINKS startup)
trelv_fuzz(description Description LINKS kit_readers sim)
trelv_fuzz(entry_name EntryName LINKS decoder sim)
trelv_fuzz(gzip Gzip SOURCES GzipMutation.cpp LargeBlocks.cpp LINKS fuzz_packs)
trelv_fuzz(ini_document IniDocument LINKS records sim)
trelv_fuzz(medium_files MediumFiles LINKS platform sim)
trelv_fuzz(removal_command RemovalCommand SOURCES RemovalCommandMutation.cpp LINKS packs sim)
trelv_fuzz(run_log RunLog LINKS kit_readers)
trelv_fuzz(tar Tar SOURCES TarMutation.cpp LargeBlocks.cpp LINKS fuzz_packs)
trelv_fuzz(version_text VersionText LINKS packs)
trelv_fuzz(xml_store XmlStore LINKS xmlstore sim)
