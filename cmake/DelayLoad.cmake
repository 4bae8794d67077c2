# Libraries of Windows that are loaded at the first call of one of their functions. Most starts of
# the manager show no window: those need not wait for the libraries of windows, shell and automation.

set(delayed_libraries
    user32.dll gdi32.dll comctl32.dll comdlg32.dll shell32.dll ole32.dll oleaut32.dll version.dll
    mpr.dll netapi32.dll userenv.dll winspool.drv)

# The linker leaves out the stub that loads a library where functions are referenced as imported ones
# only, and their first call would jump to address 0. These names make the headers declare them as
# ordinary functions.
target_compile_definitions(
  trelv_flags INTERFACE _USER32_ _GDI32_ _COMCTL32_ _COMDLG32_ _OLE32_ _OLEAUT32_
                        _SHFOLDER_ _WINSPOOL_)
# The shell's headers have no such name that works without the automation headers.
target_compile_options(trelv_flags INTERFACE "-DSHSTDAPI=EXTERN_C HRESULT STDAPICALLTYPE"
                                             "-DSHSTDAPI_(type)=EXTERN_C type STDAPICALLTYPE")

set(folder "${PROJECT_BINARY_DIR}/delay")
set(TRELV_DELAYED_LIBRARIES)
foreach(library IN LISTS delayed_libraries)
  get_filename_component(name ${library} NAME_WE)
  set(archive "${folder}/lib${name}_delay.a")
  add_custom_command(
    OUTPUT "${archive}"
    COMMAND
      "${CMAKE_COMMAND}" -D LIBRARY=${library} -D NAME=${name} -D FOLDER=${folder}
      -D COMPILER=${CMAKE_CXX_COMPILER} -D NM=${CMAKE_NM} -D DLLTOOL=${CMAKE_DLLTOOL} -P
      "${PROJECT_SOURCE_DIR}/cmake/MakeDelayLibrary.cmake"
    DEPENDS "${PROJECT_SOURCE_DIR}/cmake/MakeDelayLibrary.cmake"
    VERBATIM)
  add_custom_target(delay_${name}_made DEPENDS "${archive}")
  add_library(delay_${name} STATIC IMPORTED GLOBAL)
  set_target_properties(delay_${name} PROPERTIES IMPORTED_LOCATION "${archive}")
  add_dependencies(delay_${name} delay_${name}_made)
  list(APPEND TRELV_DELAYED_LIBRARIES delay_${name})
endforeach()
list(APPEND TRELV_DELAYED_LIBRARIES delayimp advapi32 uuid)

# trelv_check_delay_load(<target>): fails the build where such a stub is missing all the same.
function(trelv_check_delay_load target)
  add_custom_command(
    TARGET ${target} POST_BUILD
    COMMAND "${CMAKE_COMMAND}" -D PROGRAM=$<TARGET_FILE:${target}> -D NM=${CMAKE_NM} -D
            FOLDER=${PROJECT_BINARY_DIR}/delay -P "${PROJECT_SOURCE_DIR}/cmake/CheckDelayLoad.cmake"
    VERBATIM)
endfunction()
