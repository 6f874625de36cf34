# Debian packages (cpack -G DEB), one per install component:
#   runtime -> libhnrfunctionality      the two shared libraries
#   dev     -> libhnrfunctionality-dev  headers, CMake package, pkg-config, link names
#   tool    -> hnrctl                   the tool, its man page and bash completion
# Shared-library dependencies come from dpkg-shlibdeps; the packages of this
# build depend on each other at exactly this version.
set(CPACK_PACKAGE_NAME hnrfunctionality)
set(CPACK_PACKAGE_VENDOR "tessaline platform team")
set(CPACK_PACKAGE_CONTACT "tessaline platform team <platform@tessaline.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Platform module of the tessaline virtualization-management agent")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime dev tool)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The tool's own library is in the runtime package of this very build.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/src/HNRFunctionality ${PROJECT_BINARY_DIR}/src/HNKFramework)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")

set(hnr_exact "(= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libhnrfunctionality)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "Platform module of the tessaline agent: shared libraries\n The module's library and the framework library it plugs into.")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libhnrfunctionality-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libhnrfunctionality ${hnr_exact}, libboost-dev, libboost-filesystem-dev")
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "Platform module of the tessaline agent: development files\n Headers, CMake package (find_package(HNRFunctionality)) and pkg-config file.")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME hnrctl)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "libhnrfunctionality ${hnr_exact}, smbclient")
set(CPACK_COMPONENT_TOOL_DESCRIPTION
  "Command-line tool of the tessaline platform module\n Checks, reads, dumps and compares messages; lists, measures and moves files on\n SMB/CIFS shares.")
include(CPack)
