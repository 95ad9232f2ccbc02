cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/tesk_calls.cmake)
# Prints the exports, imports and resources of OBJECT as public tools list them. Fails unless it
# exports ext_main alone, has the factory marker as its only resource, imports each call of the host
# from the library that defines it and all others from the system's libraries, and relies on no more
# than the 16-byte stack alignment that the system guarantees.
execute_process(COMMAND ${OBJDUMP} -p ${OBJECT} OUTPUT_VARIABLE headers
  COMMAND_ERROR_IS_FATAL ANY)

string(REGEX MATCH "\\[Ordinal/Name Pointer\\] Table\n((\t[^\n]*\n)*)" exports "${headers}")
message("Exports:\n${CMAKE_MATCH_1}")
if(NOT CMAKE_MATCH_1 MATCHES "^\t\\[ +0\\] ext_main\n$")
  message(FATAL_ERROR "${OBJECT}: exports more or less than ext_main")
endif()

execute_process(COMMAND wrestool -l ${OBJECT} OUTPUT_VARIABLE resources COMMAND_ERROR_IS_FATAL ANY)
message("Resources:\n${resources}")
set(marker "--type='KV7OBJECTPROPERTIES' --name='KV7OBJECTPROPERTIES' --language=1033")
if(NOT resources MATCHES "^${marker} \\[offset=[^ ]* size=38\\]\n$")
  message(FATAL_ERROR "${OBJECT}: expected the marker as the only resource")
endif()
set(marker_text ${CMAKE_CURRENT_BINARY_DIR}/marker_of_object)
execute_process(COMMAND wrestool -x --raw -o ${marker_text} ${OBJECT} COMMAND_ERROR_IS_FATAL ANY)
file(READ ${marker_text} text HEX)  # as text it would lose its carriage returns
file(REMOVE ${marker_text})
string(TOLOWER "7B0D0A 2020 226B7637666163746F727965787465726E616C22 203A20 22796573220D0A 7D0D0A"
  expected)
string(REPLACE " " "" expected "${expected}")
if(NOT text STREQUAL expected)
  message(FATAL_ERROR "${OBJECT}: the marker's text is ${text}, not ${expected}")
endif()

set(system_libraries KERNEL32 msvcrt)
set(imported)
string(REGEX MATCHALL "DLL Name: [^\n]*\n\tvma:[^\n]*\n(\t[^\n]*\n)*" tables "${headers}")
message("Imports:")
foreach(table IN LISTS tables)
  string(REGEX MATCH "DLL Name: ([^\n]*)\\.dll" name "${table}")
  set(library ${CMAKE_MATCH_1})
  list(APPEND imported ${library})
  string(REGEX MATCHALL "\t[0-9a-f]+\t +[0-9]+ +[^\n]*" lines "${table}")
  list(TRANSFORM lines REPLACE "^\t[0-9a-f]+\t +[0-9]+ +([^ ]+)$" "\\1" OUTPUT_VARIABLE calls)
  list(JOIN calls " " shown)
  message("${library}.dll: ${shown}")
  if(library IN_LIST system_libraries)
    continue()
  endif()
  if(NOT library IN_LIST TESK_LIBRARIES)
    message(FATAL_ERROR "${OBJECT}: needs ${library}.dll")
  endif()
  tesk_calls_of(${library} offered)
  foreach(call ${calls})
    if(NOT call IN_LIST offered)
      message(FATAL_ERROR "${OBJECT}: imports ${call} from ${library}.dll, which has no such call")
    endif()
  endforeach()
endforeach()
foreach(library ${TESK_LIBRARIES})
  if(NOT library IN_LIST imported)
    message(FATAL_ERROR "${OBJECT}: imports nothing from ${library}.dll")
  endif()
endforeach()

# Compilers have assumed a stack aligned to 32 bytes. Moves between registers need no alignment.
execute_process(COMMAND ${OBJDUMP} -d --no-show-raw-insn ${OBJECT}
  COMMAND grep -E "vmov(aps|apd|dqa) +(.*\\(.*%ymm|%ymm[0-9]+,.*\\()" OUTPUT_VARIABLE aligned)
if(aligned)
  message(FATAL_ERROR "${OBJECT}: moves that need 32-byte alignment:\n${aligned}")
endif()
