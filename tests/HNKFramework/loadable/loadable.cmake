# Load/unload proof: a record-owning library linked to the test, a library
# the test dlopens and dlcloses, and a check that no built library carries
# STB_GNU_UNIQUE symbols (which would make glibc refuse to unload it).
set(HNK_PROBE_DIR ${CMAKE_CURRENT_LIST_DIR})

add_library(hnk_probe_owner SHARED ${HNK_PROBE_DIR}/HNKProbeOwner.cpp)
target_include_directories(hnk_probe_owner PUBLIC ${HNK_PROBE_DIR})
target_link_libraries(hnk_probe_owner PUBLIC HNK::Framework)
target_link_options(hnk_probe_owner PRIVATE -Wl,-z,defs)

add_library(hnk_probe_loadable MODULE ${HNK_PROBE_DIR}/HNKProbeLoadable.cpp)
target_link_libraries(hnk_probe_loadable PRIVATE hnk_probe_owner)
target_link_options(hnk_probe_loadable PRIVATE -Wl,-z,defs)

if(TARGET HNKLoadUnloadTest)
  target_link_libraries(HNKLoadUnloadTest PRIVATE hnk_probe_owner)
  target_compile_definitions(HNKLoadUnloadTest PRIVATE
    HNK_PROBE_LOADABLE="$<TARGET_FILE:hnk_probe_loadable>")
  add_dependencies(HNKLoadUnloadTest hnk_probe_loadable)
endif()

# A canary built with GNU unique on purpose: the check must reject it, so a
# check that silently passes everything is caught.
add_library(hnk_unique_canary SHARED ${HNK_PROBE_DIR}/HNKUniqueCanary.cpp)
target_compile_options(hnk_unique_canary PRIVATE -fgnu-unique)

set(HNK_NO_UNIQUE_CHECK ${HNK_PROBE_DIR}/check-no-unique-symbols)
add_test(NAME NoGnuUniqueSymbolsInBuiltLibraries
  COMMAND ${HNK_NO_UNIQUE_CHECK}
    $<TARGET_FILE:HNKFramework> $<TARGET_FILE:HNRFunctionality>
    $<TARGET_FILE:hnk_probe_owner> $<TARGET_FILE:hnk_probe_loadable>)
add_test(NAME NoGnuUniqueSymbolsCheckRejectsUniqueCanary
  COMMAND ${HNK_NO_UNIQUE_CHECK} $<TARGET_FILE:hnk_unique_canary>)
set_tests_properties(NoGnuUniqueSymbolsCheckRejectsUniqueCanary PROPERTIES WILL_FAIL TRUE)
