# MessageWrittenTextTest reads samples with the tool's record reader and runs
# the benchmark's round trip (bench/), so it links both.
if(TARGET MessageWrittenTextTest)
  if(NOT TARGET hnrctl_core)
    add_subdirectory(${PROJECT_SOURCE_DIR}/tools/hnrctl ${PROJECT_BINARY_DIR}/tools/hnrctl)
  endif()
  target_link_libraries(MessageWrittenTextTest PRIVATE hnrctl_core pugixml::shared)
  target_include_directories(MessageWrittenTextTest PRIVATE ${PROJECT_SOURCE_DIR}/bench)
endif()
