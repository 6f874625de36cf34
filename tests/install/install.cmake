# Installs the built libraries into a scratch prefix and builds and runs a
# small consumer project against the installed CMake package and pkg-config file.
add_test(NAME InstalledPackageBuildsAConsumer
  COMMAND ${CMAKE_CURRENT_LIST_DIR}/check-install ${PROJECT_BINARY_DIR} ${CMAKE_CURRENT_LIST_DIR}/consumer)
set_tests_properties(InstalledPackageBuildsAConsumer PROPERTIES TIMEOUT 600 LABELS install)
