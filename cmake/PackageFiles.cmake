# Gives each package, in the folder that it is made from, what Debian wants in it: the copyright and both changelogs, texts
# compressed, and completions of zsh in Debian's own folder. CPack runs this after it has installed the components there.
foreach(lComponent IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${lComponent} lKey)
    set(lShare ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${lComponent}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
    set(lDoc ${lShare}/doc/${CPACK_DEBIAN_${lKey}_PACKAGE_NAME})
    file(COPY ${CPACK_VIRE_FILES}/ DESTINATION ${lDoc})
    file(GLOB lManuals ${lShare}/man/man*/*.[1-9])
    execute_process(COMMAND gzip -9 -n ${lDoc}/changelog ${lDoc}/changelog.Debian ${lManuals} COMMAND_ERROR_IS_FATAL ANY)
    if(EXISTS ${lShare}/zsh/site-functions)
        file(RENAME ${lShare}/zsh/site-functions ${lShare}/zsh/vendor-completions)
    endif()
endforeach()
