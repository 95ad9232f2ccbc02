cmake_minimum_required(VERSION 3.25)
# Fails unless OBJECT exports ext_main alone, contains the 38 bytes of the factory marker, and imports
# only calls of the library HOST and of the C and C++ runtime.
execute_process(COMMAND ${NM} -D --defined-only ${OBJECT} OUTPUT_VARIABLE exports
  COMMAND_ERROR_IS_FATAL ANY)
string(STRIP "${exports}" exports)
if(NOT exports MATCHES "^[0-9a-f]+ T ext_main$")
  message(FATAL_ERROR "${OBJECT}: exports more or less than ext_main:\n${exports}")
endif()
execute_process(COMMAND ${OBJDUMP} -h -j KV7OBJECTPROPERTIES ${OBJECT} OUTPUT_VARIABLE section
  COMMAND_ERROR_IS_FATAL ANY)
if(NOT section MATCHES "KV7OBJECTPROPERTIES +00000026 ")
  message(FATAL_ERROR "${OBJECT}: the marker section has not 38 bytes:\n${section}")
endif()
file(STRINGS ${OBJECT} marker REGEX "\"kv7factoryexternal\" : \"yes\"")
if(NOT marker)
  message(FATAL_ERROR "${OBJECT}: the marker's text is missing")
endif()
execute_process(COMMAND ${NM} -D --defined-only --format=just-symbols ${HOST}
  OUTPUT_VARIABLE calls COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" calls "${calls}")
execute_process(COMMAND ${NM} -D --undefined-only --format=just-symbols ${OBJECT}
  OUTPUT_VARIABLE wanted COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" wanted "${wanted}")
foreach(symbol ${wanted})
  # The runtime's symbols have versions; the others are the dynamic linker's and the sanitizers'.
  if(NOT symbol MATCHES "@(GLIBC|GLIBCXX|CXXABI|GCC)_|^_ITM_|^__gmon_start__$|^__(asan|ubsan|tsan)"
     AND NOT symbol IN_LIST calls)
    message(FATAL_ERROR "${OBJECT}: imports ${symbol}, which neither host nor runtime defines")
  endif()
endforeach()
