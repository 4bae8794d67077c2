# Makes lib<NAME>_delay.a in FOLDER from the compiler's import library of the same name, with the list
# of its functions (<NAME>.def) beside it.
file(MAKE_DIRECTORY "${FOLDER}")
execute_process(COMMAND "${COMPILER}" -print-file-name=lib${NAME}.a OUTPUT_VARIABLE import
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${NM}" "${import}" OUTPUT_VARIABLE symbols ERROR_QUIET
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL " I __imp__[^\n]+" functions "${symbols}")
list(TRANSFORM functions REPLACE " I __imp__" "")
list(REMOVE_DUPLICATES functions)
list(SORT functions)
list(JOIN functions "\n" text)
file(WRITE "${FOLDER}/${NAME}.def" "LIBRARY ${LIBRARY}\nEXPORTS\n${text}\n")
execute_process(
  COMMAND "${DLLTOOL}" --kill-at --input-def "${NAME}.def" --output-delaylib "lib${NAME}_delay.a"
  WORKING_DIRECTORY "${FOLDER}" COMMAND_ERROR_IS_FATAL ANY)
