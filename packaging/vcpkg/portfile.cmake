# An overlay port for the tree that contains it:
#     vcpkg install tova --overlay-ports=packaging/vcpkg
# It is untested, because vcpkg is not available where this tree is tested.
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)
get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)

vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS -DTOVA_BUILD_TESTS=OFF -DTOVA_BUILD_EXAMPLES=OFF -DTOVA_BUILD_TOOLS=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/tova)
vcpkg_fixup_pkgconfig()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share"
  "${CURRENT_PACKAGES_DIR}/debug/bin" "${CURRENT_PACKAGES_DIR}/bin")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
