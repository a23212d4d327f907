# What a Debian package has besides what is installed everywhere: change log and a word to lintian;
# and change log and man page compressed. Runs on the staged tree, before it is packed.
set(TREE ${CPACK_TEMPORARY_DIRECTORY}/usr)
set(DOC ${TREE}/share/doc/${CPACK_PACKAGE_NAME})

file(COPY_FILE ${CPACK_OMREL_SOURCE}/CHANGELOG.md ${DOC}/changelog)
string(TIMESTAMP DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)  # SOURCE_DATE_EPOCH's, where that is set
file(WRITE ${DOC}/changelog.Debian
     "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) stable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; what changed is in changelog.gz.

 -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${DATE}
")
file(WRITE ${TREE}/share/lintian/overrides/${CPACK_PACKAGE_NAME}
     "# Tcl's own section of manual pages, the only one in which \"man n big\" looks.
${CPACK_PACKAGE_NAME}: odd-place-for-manual-page [usr/share/man/mann/big.n.gz]
")
execute_process(
  COMMAND gzip -9n ${DOC}/changelog ${DOC}/changelog.Debian ${TREE}/share/man/mann/big.n
  COMMAND_ERROR_IS_FATAL ANY)
