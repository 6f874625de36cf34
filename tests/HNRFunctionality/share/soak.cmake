# The share fault campaign (HNRShareSoak.cpp): CTest runs a small version
# (2 rounds of 40 MiB, a tree of 200 files) beside a real smbd; scripts/soak-share the full one.
if(NOT HNR_TEST_FILTER OR "HNRShareSoak" MATCHES "${HNR_TEST_FILTER}")
  add_executable(HNRShareSoak ${CMAKE_CURRENT_LIST_DIR}/HNRShareSoak.cpp)
  target_link_libraries(HNRShareSoak PRIVATE hnr_test_support hnr_test_smbd)
  add_test(NAME HNRShareSoakSmb
    COMMAND ${PROJECT_SOURCE_DIR}/scripts/with-smbd $<TARGET_FILE:HNRShareSoak> --rounds 2 --mb 40 --files 200 --folders 4)
  set_tests_properties(HNRShareSoakSmb PROPERTIES LABELS "smb" TIMEOUT 900)
endif()
