# Runs PROGRAM, by EMULATOR if it is for another machine, and fails unless it succeeds and prints
# what the file EXPECTED holds, whatever ends its lines.

execute_process(COMMAND ${EMULATOR} ${PROGRAM} OUTPUT_VARIABLE output RESULT_VARIABLE result)
string(REPLACE "\r\n" "\n" output "${output}")
file(READ ${EXPECTED} expected)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} ended with ${result}:\n${output}")
endif()
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "${PROGRAM} printed\n${output}\ninstead of\n${expected}")
endif()
