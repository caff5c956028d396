# Runs HOST on EXTENSION and compares what it prints with the file EXPECTED.
list(REMOVE_ITEM HOST "")
execute_process(COMMAND ${HOST} ${EXTENSION} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
string(REPLACE "\r" "" printed "${printed}")
file(READ ${EXPECTED} expected)
if(NOT status EQUAL 0 OR NOT printed STREQUAL expected)
  message(FATAL_ERROR "status ${status}; expected\n${expected}\nbut got\n${printed}")
endif()
