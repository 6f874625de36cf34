# Schema tests link the schema validator of hnrctl (libxml2 against schema/).
foreach(schema_test SchemaSampleAgreementTest SchemaWriterAgreementTest SchemaGeneratedAgreementTest
    SchemaSettingsTableAgreementTest)
  if(TARGET ${schema_test})
    if(NOT TARGET hnrctl_schema)
      add_subdirectory(${PROJECT_SOURCE_DIR}/tools/hnrctl ${PROJECT_BINARY_DIR}/tools/hnrctl)
    endif()
    target_link_libraries(${schema_test} PRIVATE hnrctl_schema)
  endif()
endforeach()
