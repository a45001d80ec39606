# The Debian packages: `cpack --config build/packages/CPackConfig.cmake`, a package for each component.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME varlo-analytics)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_SET_DESTDIR ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/remove-rpath.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Varlo Analytics Maintainers <maintainers@varlo-analytics.example>")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/platform ${CMAKE_BINARY_DIR}/source)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(CMAKE_CROSSCOMPILING)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${DEBIAN_ARCHITECTURE})
    # Which libraries there are, and whose, is asked of the other architecture's.
    list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
        ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE} ${CMAKE_SYSROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE})
    set(CPACK_DPKG_DATABASE ${CMAKE_SYSROOT}/var/lib/dpkg)
endif()

# debian_package(component section depends synopsis text)
macro(debian_package component section depends synopsis)
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package_${component}})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
    string(JOIN "\n" CPACK_DEBIAN_${upper}_DESCRIPTION "${synopsis}" ${ARGN})
endmacro()

debian_package(api libs "${package_platform}@SAME@" "SOAP web service of a camera's video analytics (library)"
    "Clients create, edit, run and stop analytic profiles over SOAP 1.1 and 1.2."
    "This library answers them, on whatever platform layer stands behind it.")
debian_package(platform libs "" "platform layer of a camera's video analytics"
    "Durable profile store, plug-in folder, settings document and server, on"
    "which the SOAP web service of the video analytics stands.")
debian_package(host net "${package_api}@SAME@, ${package_platform}@SAME@, procps, systemd | systemd-standalone-sysusers | systemd-sysusers"
    "SOAP web service of a camera's video analytics (service)"
    "The process that hosts the service, its plug-ins and settings, and the"
    "WSDL for the clients. It runs without privileges under systemd.")
debian_package(client utils "" "command-line client of a camera's video analytics"
    "Shows, edits, saves and copies analytic profiles from a shell, and keeps those"
    "of many cameras as the files of a folder say, also with Ansible.")
set(CPACK_DEBIAN_CLIENT_PACKAGE_SUGGESTS ansible-core)
debian_package(dev libdevel "${package_api}@SAME@, ${package_platform}@SAME@"
    "development files of a camera's video analytics"
    "Headers, CMake package and pkg-config files for another platform layer or"
    "another host of the SOAP web service.")
foreach(library API PLATFORM)
    set(CPACK_DEBIAN_${library}_PACKAGE_CONTROL_EXTRA
        ${CMAKE_CURRENT_SOURCE_DIR}/debian/library/triggers ${CMAKE_CURRENT_SOURCE_DIR}/debian/library/postinst)
endforeach()
set(CPACK_DEBIAN_HOST_PACKAGE_SUGGESTS logrotate)
file(GLOB CPACK_DEBIAN_HOST_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/host/*)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_SOURCE_DIR}/at-packing.cmake)
include(CPack)
