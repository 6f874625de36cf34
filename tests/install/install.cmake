# Installs the built libraries into a scratch prefix and builds and runs a
# small consumer project against the installed CMake package and pkg-config file.
add_test(NAME InstalledPackageBuildsAConsumer
  COMMAND ${CMAKE_CURRENT_LIST_DIR}/check-install ${PROJECT_BINARY_DIR} ${CMAKE_CURRENT_LIST_DIR}/consumer)
set_tests_properties(InstalledPackageBuildsAConsumer PROPERTIES TIMEOUT 600 LABELS install)

# Builds the Debian packages with cpack and installs them with apt-get into a
# clean Debian 12 root (cached between runs), where the consumer is built and
# hnrctl runs. Needs root and the Debian archive.
add_test(NAME DebianPackagesInstallIntoACleanRoot
  COMMAND ${CMAKE_CURRENT_LIST_DIR}/check-deb-packages ${PROJECT_BINARY_DIR} ${CMAKE_CURRENT_LIST_DIR}/consumer)
set_tests_properties(DebianPackagesInstallIntoACleanRoot PROPERTIES TIMEOUT 1200 LABELS "install;package"
  RUN_SERIAL TRUE)

add_test(NAME SharedLibraryExportsOnlyTheInstalledApi
  COMMAND ${CMAKE_CURRENT_LIST_DIR}/check-exports ${PROJECT_BINARY_DIR})
set_tests_properties(SharedLibraryExportsOnlyTheInstalledApi PROPERTIES TIMEOUT 300 LABELS install)
