# The packages of one build belong together; `cpack -D CPACK_DEBIAN_PACKAGE_RELEASE=2` sets their revision.
foreach(component API HOST DEV)
    string(REPLACE "@SAME@" " (= ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})"
        CPACK_DEBIAN_${component}_PACKAGE_DEPENDS "${CPACK_DEBIAN_${component}_PACKAGE_DEPENDS}")
endforeach()
if(CPACK_DPKG_DATABASE)
    set(ENV{DPKG_ADMINDIR} ${CPACK_DPKG_DATABASE})
endif()
# Each package has a summary of its own.
unset(CPACK_PACKAGE_DESCRIPTION_SUMMARY)
