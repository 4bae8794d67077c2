# src/win32/resource.h is the one list of the forms' controls. The resource compiler reads it as it is;
# the program's table of their names is made here, a row for each line "#define IDC_name number".

set(list "${PROJECT_SOURCE_DIR}/src/win32/resource.h")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${list}")
file(STRINGS "${list}" lines REGEX "^ *# *define +IDC_")
list(FILTER lines EXCLUDE REGEX "IDC_STATIC")
set(rows)
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^#define IDC_([A-Za-z0-9_]+) ([0-9]+)$")
    message(FATAL_ERROR "src/win32/resource.h: not a name and a number: ${line}")
  endif()
  string(APPEND rows "{\"${CMAKE_MATCH_1}\", ${CMAKE_MATCH_2}},\n")
endforeach()
set(TRELV_CONTROL_TABLE "${PROJECT_BINARY_DIR}/control-table")
file(CONFIGURE OUTPUT "${TRELV_CONTROL_TABLE}/ControlTable.inc" CONTENT "${rows}" @ONLY)
