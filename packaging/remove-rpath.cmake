# A package's programs find their libraries where Debian has them.
file(GLOB_RECURSE files ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/sbin/*
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/bin/*
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/lib/*/lib*.so.*.*)
foreach(file ${files})
    if(NOT IS_SYMLINK ${file})
        file(RPATH_REMOVE FILE ${file})
    endif()
endforeach()
