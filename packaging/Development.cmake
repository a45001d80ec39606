# What a program of another maker is built with: find_package(VarloAnalytics) and pkg-config.

include(CMakePackageConfigHelpers)
set(config ${CMAKE_INSTALL_LIBDIR}/cmake/VarloAnalytics)
install(EXPORT VarloAnalytics NAMESPACE VarloAnalytics:: FILE VarloAnalyticsTargets.cmake
    DESTINATION ${config} COMPONENT dev)
configure_package_config_file(VarloAnalyticsConfig.cmake.in VarloAnalyticsConfig.cmake
    INSTALL_DESTINATION ${config} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(VarloAnalyticsConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/VarloAnalyticsConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/VarloAnalyticsConfigVersion.cmake
    DESTINATION ${config} COMPONENT dev)

foreach(library api platform)
    configure_file(varlo-analytics-${library}.pc.in varlo-analytics-${library}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/varlo-analytics-${library}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endforeach()
