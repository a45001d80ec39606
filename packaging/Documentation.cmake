# Manual pages and what each Debian package has below share/doc, compressed without a time stamp.

find_program(GZIP gzip REQUIRED)

# compressed(INPUT folder name component): installs INPUT as folder/name.gz.
function(compressed input folder name component)
    set(output ${CMAKE_CURRENT_BINARY_DIR}/compressed/${component}/${name}.gz)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/compressed/${component}
        COMMAND ${GZIP} -9nc ${input} > ${output}
        DEPENDS ${input}
        VERBATIM)
    set_property(GLOBAL APPEND PROPERTY COMPRESSED ${output})
    install(FILES ${output} DESTINATION ${folder} COMPONENT ${component})
endfunction()

compressed(${CMAKE_CURRENT_SOURCE_DIR}/man/varlo-analytics-host.8 ${CMAKE_INSTALL_MANDIR}/man8
    varlo-analytics-host.8 host)
compressed(${CMAKE_CURRENT_SOURCE_DIR}/man/varlo-analytics-settings.5 ${CMAKE_INSTALL_MANDIR}/man5
    varlo-analytics-settings.5 host)
compressed(${CMAKE_SOURCE_DIR}/CHANGELOG.md ${CMAKE_INSTALL_DATADIR}/doc/${package_host} changelog host)
install(FILES ${CMAKE_SOURCE_DIR}/docs/engine-feed.md ${CMAKE_SOURCE_DIR}/docs/engine-document.md
    ${CMAKE_SOURCE_DIR}/docs/operations.md ${CMAKE_SOURCE_DIR}/docs/alert-rules.yml
    ${CMAKE_SOURCE_DIR}/SECURITY.md ${CMAKE_SOURCE_DIR}/VERIFY.md
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package_host} COMPONENT host)
install(FILES ${CMAKE_SOURCE_DIR}/examples/engine/engine.cpp
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package_host}/examples COMPONENT host)
if(TARGET varlo-analytics)
    compressed(${CMAKE_CURRENT_SOURCE_DIR}/man/varlo-analytics.1 ${CMAKE_INSTALL_MANDIR}/man1
        varlo-analytics.1 client)
    # The documents: their fields come from the model, so that the page is made with the build. A package's
    # files are its own, so that both packages can be installed.
    set(page ${CMAKE_CURRENT_BINARY_DIR}/varlo-analytics-documents.5)
    set(schemas ${CMAKE_BINARY_DIR}/tools/schemas)
    add_custom_command(OUTPUT ${page}
        COMMAND cat ${CMAKE_CURRENT_SOURCE_DIR}/man/varlo-analytics-documents.5 ${schemas}/fields.man > ${page}
        DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/man/varlo-analytics-documents.5 ${schemas}/fields.man schemas
        VERBATIM)
    foreach(component client dev)
        set(name ${package_${component}})
        compressed(${page} ${CMAKE_INSTALL_MANDIR}/man5 ${name}-documents.5 ${component})
        install(DIRECTORY ${schemas}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/${name}/schemas COMPONENT ${component}
            FILES_MATCHING PATTERN *.xsd PATTERN *.schema.json)
        install(FILES ${CMAKE_BINARY_DIR}/schema/generated/VideoAnalytics.wsdl
            ${CMAKE_BINARY_DIR}/schema/generated/VideoAnalytics.xsd
            DESTINATION ${CMAKE_INSTALL_DATADIR}/${name}/schemas COMPONENT ${component})
        install(FILES ${CMAKE_SOURCE_DIR}/docs/behavior-document.md ${CMAKE_SOURCE_DIR}/docs/scene-document.md
            ${CMAKE_SOURCE_DIR}/docs/clients.md
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
        install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/pictures
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component} FILES_MATCHING PATTERN *.svg)
    endforeach()
    install(FILES ${CMAKE_SOURCE_DIR}/docs/fleet.md ${CMAKE_SOURCE_DIR}/docs/console.md
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package_client} COMPONENT client)
    install(FILES ${CMAKE_SOURCE_DIR}/docs/pictures/car-park.png ${CMAKE_SOURCE_DIR}/docs/pictures/console.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package_client}/pictures COMPONENT client)
endif()

# What lintian finds and why it stays, in parts that packages share.
set(lintian_api libraries)
set(lintian_platform libraries)
set(lintian_client client)
foreach(component ${components})
    set(package ${package_${component}})
    set(overrides ${CMAKE_CURRENT_BINARY_DIR}/${package}.overrides)
    file(WRITE ${overrides} "")
    foreach(part all ${lintian_${component}})
        file(READ lintian/${part} text)
        file(APPEND ${overrides} "${text}")
    endforeach()
    install(FILES ${overrides} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${package} COMPONENT ${component})
    configure_file(changelog.in ${package}.changelog @ONLY)
    compressed(${CMAKE_CURRENT_BINARY_DIR}/${package}.changelog
        ${CMAKE_INSTALL_DATADIR}/doc/${package} changelog.Debian ${component})
    install(FILES copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()

get_property(all GLOBAL PROPERTY COMPRESSED)
add_custom_target(documentation ALL DEPENDS ${all})
