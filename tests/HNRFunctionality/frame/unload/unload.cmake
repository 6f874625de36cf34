# Load/unload of the real module: a program that links only the framework
# (every *Test.cpp program links the module, which would keep it mapped).
add_executable(HNRUnloadCheck ${CMAKE_CURRENT_LIST_DIR}/HNRUnloadCheck.cpp)
target_link_libraries(HNRUnloadCheck PRIVATE HNK::Framework GTest::gtest GTest::gtest_main ${CMAKE_DL_LIBS})
target_include_directories(HNRUnloadCheck PRIVATE ${PROJECT_SOURCE_DIR}/src/HNRFunctionality)
target_compile_definitions(HNRUnloadCheck PRIVATE HNR_FUNCTIONALITY_LIB="$<TARGET_FILE:HNRFunctionality>")
add_dependencies(HNRUnloadCheck HNRFunctionality)
gtest_discover_tests(HNRUnloadCheck DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
