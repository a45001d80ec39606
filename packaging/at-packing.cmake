# Development files belong to one version of the libraries; `cpack -D CPACK_DEBIAN_PACKAGE_RELEASE=2` sets it.
string(REPLACE "@SAME@" " (= ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})"
    CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${CPACK_DEBIAN_DEV_PACKAGE_DEPENDS}")
# Each package has a summary of its own.
unset(CPACK_PACKAGE_DESCRIPTION_SUMMARY)
