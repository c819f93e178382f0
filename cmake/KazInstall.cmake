# What `cmake --install` puts where. The installed tree may be moved: libraries find each other beside
# themselves, and no file names the machine that built it. A distribution's packages, whose libraries lie in the
# loader's own folders, switch the search paths off with -DCMAKE_SKIP_INSTALL_RPATH=ON.
#
# Components: kazwifi (the library), kazwifi-dev, kazplatform (the three platform libraries), kazplatform-dev,
# tools, dependencies (fmt and spdlog, where they were built by ./dev).

include(CMakePackageConfigHelpers)

set(kaz_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake")
file(RELATIVE_PATH kaz_bin_to_lib "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")

# Installs libraries and describes them to CMake as kaz::<name without the leading kaz>. Those who use
# them compile as STANDARD or newer.
#
#   kaz_install_libraries(PACKAGE COMPONENT name STANDARD feature LIBRARIES target...)
function(kaz_install_libraries package)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "COMPONENT;STANDARD" "LIBRARIES")
  foreach(library IN LISTS arg_LIBRARIES)
    string(REGEX REPLACE "^kaz" "" name ${library})
    set_target_properties(${library} PROPERTIES EXPORT_NAME ${name} INSTALL_RPATH "$ORIGIN")
    target_compile_features(${library} INTERFACE ${arg_STANDARD})
  endforeach()
  install(TARGETS ${arg_LIBRARIES} EXPORT ${package}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT ${arg_COMPONENT} NAMELINK_COMPONENT ${arg_COMPONENT}-dev
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${arg_COMPONENT}-dev)
  install(EXPORT ${package} NAMESPACE kaz:: FILE ${package}Targets.cmake
    DESTINATION ${kaz_package_dir}/${package} COMPONENT ${arg_COMPONENT}-dev)

  configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/cmake/${package}Config.cmake.in" "${PROJECT_BINARY_DIR}/${package}Config.cmake"
    INSTALL_DESTINATION ${kaz_package_dir}/${package} NO_SET_AND_CHECK_MACRO)
  # One SONAME per major version: a program that was linked against an older library runs with a newer one.
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/${package}ConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
  install(FILES
    "${PROJECT_BINARY_DIR}/${package}Config.cmake" "${PROJECT_BINARY_DIR}/${package}ConfigVersion.cmake"
    DESTINATION ${kaz_package_dir}/${package} COMPONENT ${arg_COMPONENT}-dev)
endfunction()

kaz_install_libraries(kazwifi COMPONENT kazwifi STANDARD cxx_std_17 LIBRARIES kazwifi kazwifi-client)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/wifi" "${PROJECT_BINARY_DIR}/include/wifi"
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT kazwifi-dev FILES_MATCHING PATTERN "*.h")

file(RELATIVE_PATH kaz_pc_to_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
foreach(package IN ITEMS kazwifi kazwifi-client)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${package}.pc.in" "${PROJECT_BINARY_DIR}/${package}.pc" @ONLY)
endforeach()
install(FILES "${PROJECT_BINARY_DIR}/kazwifi.pc" "${PROJECT_BINARY_DIR}/kazwifi-client.pc"
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT kazwifi-dev)

if(KAZ_PLATFORM STREQUAL "bundled")
  kaz_install_libraries(kazplatform COMPONENT kazplatform STANDARD cxx_std_20 LIBRARIES kazdbus kazmetrics kazcommon)
  install(DIRECTORY
    "${PROJECT_SOURCE_DIR}/platform/common/include/kaz"
    "${PROJECT_SOURCE_DIR}/platform/dbus/include/kaz"
    "${PROJECT_SOURCE_DIR}/platform/metrics/include/kaz"
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT kazplatform-dev FILES_MATCHING PATTERN "*.h")
endif()

if(TARGET kazwifictl)
  set_target_properties(kazwifictl PROPERTIES INSTALL_RPATH "$ORIGIN/${kaz_bin_to_lib}")
  install(TARGETS kazwifictl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()

# Without this, libraries of ./dev setup would be missing after the checkout is removed.
cmake_path(IS_PREFIX kaz_deps_dir "${spdlog_DIR}" NORMALIZE kaz_deps_are_ours)
if(kaz_deps_are_ours)
  install(IMPORTED_RUNTIME_ARTIFACTS spdlog::spdlog fmt::fmt
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dependencies)
endif()
