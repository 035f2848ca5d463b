# What an installation holds: the library, its header, a CMake package and a pkg-config file. Both find the files from
# their own place, so that a prefix can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/PlenarSDK)

install(TARGETS PlenarSDK
    EXPORT PlenarSDKTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/plenar_sdk.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/PlenarSDKConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/PlenarSDKConfig.cmake
    INSTALL_DESTINATION ${package_dir}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
    ${CMAKE_CURRENT_BINARY_DIR}/PlenarSDKConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(EXPORT PlenarSDKTargets NAMESPACE PlenarSDK:: DESTINATION ${package_dir})
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/PlenarSDKConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/PlenarSDKConfigVersion.cmake
    DESTINATION ${package_dir})

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} OR IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
    set(pkgconfig_prefix ${CMAKE_INSTALL_PREFIX})
    set(pkgconfig_libdir ${CMAKE_INSTALL_FULL_LIBDIR})
    set(pkgconfig_includedir ${CMAKE_INSTALL_FULL_INCLUDEDIR})
else()
    file(RELATIVE_PATH up_to_prefix /${pkgconfig_dir} /)
    string(REGEX REPLACE "/$" "" up_to_prefix ${up_to_prefix})
    set(pkgconfig_prefix "\${pcfiledir}/${up_to_prefix}")
    set(pkgconfig_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
    set(pkgconfig_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/PlenarSDK.pc.in ${CMAKE_CURRENT_BINARY_DIR}/PlenarSDK.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/PlenarSDK.pc DESTINATION ${pkgconfig_dir})
