# The generator of the golden texts beside the sample messages (tests/data/*.out.xml);
# scripts/regen-golden builds and runs it.
add_executable(hnr_golden_generate ${CMAKE_CURRENT_LIST_DIR}/GoldenGenerate.cpp)
target_include_directories(hnr_golden_generate PRIVATE ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(hnr_golden_generate PRIVATE HNR::Functionality)
