# hnrctl message validate, run as the built binary.
if(TARGET HnrctlValidateTest)
  if(NOT TARGET hnrctl)
    add_subdirectory(${PROJECT_SOURCE_DIR}/tools/hnrctl ${PROJECT_BINARY_DIR}/tools/hnrctl)
  endif()
  target_link_libraries(HnrctlValidateTest PRIVATE hnrctl_core)
  target_compile_definitions(HnrctlValidateTest PRIVATE HNRCTL_PATH="$<TARGET_FILE:hnrctl>")
  add_dependencies(HnrctlValidateTest hnrctl)
endif()
