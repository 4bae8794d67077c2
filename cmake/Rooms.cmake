# The functions that make targets out of folders. Every folder is globbed, so that a new file takes
# part with the next build, and a folder that is missing or empty gives a target without sources.

# trelv_room(<name> [ROOT <folder>] [FOLDERS <folder>...] [ONLY <file>...] [EXCEPT <file>...]
#            [LINKS <target>...])
# A static library of the sources in src/<name> or in the named folders. Without sources it is an
# interface library of the same name. Sets trelv_<name>_scope to the keyword for further links.
function(trelv_room name)
  cmake_parse_arguments(PARSE_ARGV 1 room "" "ROOT" "FOLDERS;ONLY;EXCEPT;LINKS")
  if(NOT room_ROOT)
    set(room_ROOT src)
  endif()
  if(NOT room_FOLDERS)
    set(room_FOLDERS ${name})
  endif()
  set(sources)
  foreach(folder IN LISTS room_FOLDERS)
    file(GLOB found CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${room_ROOT}/${folder}/*.cpp")
    foreach(source IN LISTS found)
      get_filename_component(file "${source}" NAME)
      if((NOT room_ONLY OR file IN_LIST room_ONLY) AND NOT file IN_LIST room_EXCEPT)
        list(APPEND sources "${source}")
      endif()
    endforeach()
  endforeach()
  if(sources)
    add_library(${name} STATIC ${sources})
    set(scope PUBLIC)
  else()
    add_library(${name} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_link_libraries(${name} ${scope} trelv_flags ${room_LINKS})
  set(trelv_${name}_scope ${scope} PARENT_SCOPE)
endfunction()

# trelv_resources(<name> <folder>): the resource scripts of a folder, as objects to link with.
# What carries the project's version is made in the build folder: ProgramVersion.h, the manifests.
function(trelv_resources name folder)
  file(GLOB scripts CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.rc")
  set(generated "${PROJECT_BINARY_DIR}/resources/${folder}")
  add_library(${name} INTERFACE)
  if(scripts)
    add_library(${name}_objects OBJECT ${scripts})
    string(REPLACE "." "," TRELV_VERSION_NUMBERS "${PROJECT_VERSION}")
    file(CONFIGURE OUTPUT "${generated}/ProgramVersion.h"
         CONTENT "#define TRELV_VERSION_NUMBERS @TRELV_VERSION_NUMBERS@
#define TRELV_VERSION_TEXT \"@PROJECT_VERSION@\"
" @ONLY)
    file(GLOB manifests CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.manifest.in")
    foreach(manifest IN LISTS manifests)
      get_filename_component(file "${manifest}" NAME_WLE)
      configure_file("${manifest}" "${generated}/${file}" @ONLY)
    endforeach()
    target_include_directories(
      ${name}_objects PRIVATE "${generated}" "${PROJECT_SOURCE_DIR}/src" "${PROJECT_SOURCE_DIR}"
                              "${PROJECT_SOURCE_DIR}/${folder}")
    # A resource script includes headers, icons and the manifest: all of them renew it.
    file(GLOB parts CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.h"
         "${PROJECT_SOURCE_DIR}/${folder}/*.ico" "${PROJECT_SOURCE_DIR}/${folder}/*.bmp"
         "${generated}/*.h" "${generated}/*.manifest")
    set_source_files_properties(${scripts} PROPERTIES OBJECT_DEPENDS "${parts}")
    target_link_libraries(${name} INTERFACE ${name}_objects $<TARGET_OBJECTS:${name}_objects>)
  endif()
endfunction()

# trelv_entry_point(<target> <source>...): link options by the entry point that the sources name.
function(trelv_entry_point target)
  foreach(source IN LISTS ARGN)
    file(STRINGS "${source}" entry REGEX "(^|[^A-Za-z])(wmain|wWinMain|WinMain) *\\(")
    if(entry MATCHES "wmain|wWinMain")
      target_link_options(${target} PRIVATE -municode)
    endif()
    if(entry MATCHES "WinMain")
      set_target_properties(${target} PROPERTIES WIN32_EXECUTABLE ON)
    endif()
  endforeach()
endfunction()

# trelv_symbols(<target>): strips the program, whose symbols stay in build folder/symbols, and marks it
# for a share or medium that goes away while it runs.
function(trelv_symbols target)
  set(symbols "${PROJECT_BINARY_DIR}/symbols/$<TARGET_FILE_NAME:${target}>.debug")
  set(mark "${PROJECT_SOURCE_DIR}/tools/mark-program")
  add_custom_command(
    TARGET ${target} POST_BUILD
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${PROJECT_BINARY_DIR}/symbols"
    COMMAND "${CMAKE_OBJCOPY}" --only-keep-debug "$<TARGET_FILE:${target}>" "${symbols}"
    COMMAND "${mark}" "${symbols}"
    COMMAND "${CMAKE_OBJCOPY}" --strip-all "--add-gnu-debuglink=${symbols}"
            "$<TARGET_FILE:${target}>"
    COMMAND "${mark}" "$<TARGET_FILE:${target}>"
    VERBATIM)
endfunction()

# The manager itself, as soon as its composition root exists.
function(trelv_manager)
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/app/*.cpp")
  if(NOT sources)
    return()
  endif()
  trelv_resources(app_resources src/app)
  add_executable(TrelvManager WIN32 ${sources})
  trelv_entry_point(TrelvManager ${sources})
  target_compile_options(TrelvManager PRIVATE -g1)
  target_link_libraries(TrelvManager PRIVATE main xmlstore win32 win32_resources app_resources
                                              library_failures)
  set_target_properties(TrelvManager PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
  trelv_check_delay_load(TrelvManager)
  trelv_symbols(TrelvManager)
endfunction()

# The decoder of "gz" packs.
function(trelv_decoder)
  set(source "${PROJECT_SOURCE_DIR}/src/app/decoder/main.cpp")
  add_executable(qalbunex "${source}")
  trelv_entry_point(qalbunex "${source}")
  target_compile_options(qalbunex PRIVATE -g1)
  target_link_libraries(qalbunex PRIVATE win32_decoder decoder_resources library_failures)
  set_target_properties(qalbunex PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
  trelv_check_delay_load(qalbunex)
  trelv_symbols(qalbunex)
endfunction()

# trelv_kit(<system> LINKS <target>...): the second program; src/app/kit/<system>.cpp is its composition
# root.
function(trelv_kit system)
  cmake_parse_arguments(PARSE_ARGV 1 kit "" "" "LINKS")
  set(source "${PROJECT_SOURCE_DIR}/src/app/kit/${system}.cpp")
  add_executable(trelv "${source}")
  trelv_entry_point(trelv "${source}")
  target_compile_options(trelv PRIVATE -g1)
  target_link_libraries(trelv PRIVATE kit ${kit_LINKS})
  set_target_properties(trelv PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
endfunction()

# trelv_small_programs(<folder> <output>): every source of the folder is a program of its own name;
# a resource script of the same name goes into it.
function(trelv_small_programs folder output)
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
  foreach(source IN LISTS sources)
    get_filename_component(name "${source}" NAME_WE)
    get_filename_component(base "${source}" DIRECTORY)
    string(REPLACE "/" "_" target "${folder}/${name}")
    add_executable(${target} "${source}")
    if(EXISTS "${base}/${name}.rc")
      target_sources(${target} PRIVATE "${base}/${name}.rc")
    endif()
    trelv_entry_point(${target} "${source}")
    target_link_libraries(${target} PRIVATE trelv_flags ${TRELV_WINDOWS_LIBRARIES})
    target_link_options(${target} PRIVATE -s)
    set_target_properties(${target} PROPERTIES OUTPUT_NAME "${name}"
                                               RUNTIME_OUTPUT_DIRECTORY "${output}")
  endforeach()
endfunction()

# trelv_small_libraries(<folder> <output>): every source of the folder is a DLL of its own name that
# exports what the .def file of the same name lists, stdcall functions without their decoration.
function(trelv_small_libraries folder output)
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
  foreach(source IN LISTS sources)
    get_filename_component(name "${source}" NAME_WE)
    get_filename_component(base "${source}" DIRECTORY)
    string(REPLACE "/" "_" target "${folder}/${name}")
    add_library(${target} SHARED "${source}")
    if(EXISTS "${base}/${name}.def")
      target_sources(${target} PRIVATE "${base}/${name}.def")
    endif()
    target_link_libraries(${target} PRIVATE trelv_flags ${TRELV_WINDOWS_LIBRARIES})
    target_link_options(${target} PRIVATE -s -Wl,--kill-at -Wl,--enable-stdcall-fixup)
    set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME "${name}"
                                               RUNTIME_OUTPUT_DIRECTORY "${output}")
  endforeach()
endfunction()
