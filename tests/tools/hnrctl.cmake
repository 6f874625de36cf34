# The tool's tests: HnrctlTest links the tool's code (in-process commands) and
# runs the built binary; HnrctlSmbTest runs the binary against a real smbd.
foreach(hnrctl_test HnrctlTest HnrctlSmbTest)
  if(TARGET ${hnrctl_test})
    if(NOT TARGET hnrctl)
      add_subdirectory(${PROJECT_SOURCE_DIR}/tools/hnrctl ${PROJECT_BINARY_DIR}/tools/hnrctl)
    endif()
    target_link_libraries(${hnrctl_test} PRIVATE hnrctl_core)
    target_compile_definitions(${hnrctl_test} PRIVATE HNRCTL_PATH="$<TARGET_FILE:hnrctl>"
      HNRCTL_TEST_VERSION="${PROJECT_VERSION}")
    add_dependencies(${hnrctl_test} hnrctl)
  endif()
endforeach()

if(TARGET hnrctl)
  add_test(NAME HnrctlBashCompletion
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/check-completion ${PROJECT_SOURCE_DIR}/tools/hnrctl/hnrctl.bash-completion
      $<TARGET_FILE:hnrctl>)
endif()
