# Fails unless OBJECT exports ext_main alone and carries the 38 bytes of the factory marker.
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
