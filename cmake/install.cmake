# What an installation holds, named file by file; the last include of the project, since it names
# targets of all folders.
set(package lib/vesk/package)
set(built_targets)
set(built_files)
set(left_out)  # one sentence each
if(TARGET vesk)
  list(APPEND built_targets vesk vesk_package)
  list(APPEND built_files $<TARGET_FILE:vesk> $<TARGET_FILE:tesk_host> $<TARGET_FILE:vesk_object>
    ${VESK_REFERENCE_PAGE})
else()
  list(APPEND left_out "The program and its package: not installed, VESK_TOOLS was off")
endif()
if(TARGET vesk_lv2)
  list(APPEND built_targets vesk_lv2 vesk_lv2_texts)
  list(APPEND built_files $<TARGET_FILE:vesk_lv2> ${VESK_LV2_TEXTS})
elseif(VESK_LV2)
  list(APPEND left_out "LV2 plugin: not installed, LV2's headers were missing when this build was \
configured (Debian: lv2-dev)")
else()
  list(APPEND left_out "LV2 plugin: not installed, VESK_LV2 was off")
endif()

# Builds what is installed, and neither tests nor benchmarks.
add_custom_target(vesk_installation)
if(built_targets)
  add_dependencies(vesk_installation ${built_targets})
endif()

# Installing runs the rules in this order, so nothing is copied from an incomplete build.
install(CODE "set(build_folder [==[${PROJECT_BINARY_DIR}]==])
set(built_files [==[${built_files}]==])
set(left_out [==[${left_out}]==])")
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/check_before_install.cmake)
if(TARGET vesk)
  install(TARGETS vesk RUNTIME DESTINATION bin)
  install(TARGETS tesk_host LIBRARY DESTINATION lib/vesk)
  install(TARGETS vesk_object LIBRARY DESTINATION ${package}/externals)
  install(FILES ${VESK_REFERENCE_PAGE} DESTINATION ${package}/docs)
  file(GLOB presets CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/presets/*.txt)
  install(FILES ${presets} DESTINATION ${package}/presets)
  file(GLOB scores CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/scores/*.txt)
  install(FILES ${scores} DESTINATION ${package}/scores)
  install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${package})
endif()
if(TARGET vesk_lv2)
  install(TARGETS vesk_lv2 LIBRARY DESTINATION lib/lv2/vesk.lv2)
  install(FILES ${VESK_LV2_TEXTS} DESTINATION lib/lv2/vesk.lv2)
endif()
