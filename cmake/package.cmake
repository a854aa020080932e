# Installation ("cmake --install") and the Debian package ("cpack" in a release tree). The product's
# folder is compiled in; documents and completion go below the prefix. What the inventory consists of
# is no part of the package: packaging/setup.sh creates it where it is missing.
include(GNUInstallDirs)

set(product /usr/opt/tqs)
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(compressed ${PROJECT_BINARY_DIR}/compressed)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME program)

# Installs a file packed by gzip, as manual pages and changelogs are on Debian. What follows the name
# are further words of install().
function(install_compressed file destination name)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(MAKE_DIRECTORY ${compressed})
  execute_process(COMMAND gzip -9nc ${file} OUTPUT_FILE ${compressed}/${name}
                  COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${compressed}/${name} DESTINATION ${destination} ${ARGN})
endfunction()

install(TARGETS tqsmgr tqs RUNTIME DESTINATION ${product}/bin)
# Links where every PATH leads. The way from a link to its program depends on the prefix, which is
# known no earlier than at the installation. (No variable there may be named as a component.)
set(links ${PROJECT_BINARY_DIR}/links)
install(CODE "
  set(folder \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
  file(MAKE_DIRECTORY \"${links}\")
  foreach(name tqsmgr tqs)
    file(RELATIVE_PATH way \"\${folder}\" ${product}/bin/\${name})
    file(CREATE_LINK \${way} \"${links}/\${name}\" SYMBOLIC)
    file(INSTALL \"${links}/\${name}\" DESTINATION \"\${folder}\")
  endforeach()" COMPONENT program)
install(PROGRAMS ${packaging}/setup.sh DESTINATION ${CMAKE_INSTALL_DATADIR}/tqsmgr)
install(DIRECTORY ${packaging}/starter DESTINATION ${CMAKE_INSTALL_DATADIR}/tqsmgr)
file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/man/*.[58])
foreach(page ${pages})
  get_filename_component(name ${page} NAME)
  string(REGEX MATCH "[58]$" section ${name})
  install_compressed(${page} ${CMAKE_INSTALL_MANDIR}/man${section} ${name}.gz)
endforeach()
install(DIRECTORY completion/ DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES README.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN *.md)
install(DIRECTORY grammar DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${packaging}/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install_compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${CMAKE_INSTALL_DOCDIR} changelog.gz)

# After the files, and not while a package is made: there the package's own script does it.
install(CODE "execute_process(COMMAND sh \"${packaging}/setup.sh\" \"${packaging}/starter\"
                              COMMAND_ERROR_IS_FATAL ANY)" COMPONENT setup)

# What a package has besides.
configure_file(${packaging}/changelog.in ${PROJECT_BINARY_DIR}/changelog @ONLY)
install_compressed(${PROJECT_BINARY_DIR}/changelog ${CMAKE_INSTALL_DOCDIR} changelog.Debian.gz
  COMPONENT package EXCLUDE_FROM_ALL)
install(FILES ${packaging}/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
  RENAME tqsmgr COMPONENT package EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tqsmgr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR})
set(CPACK_INSTALL_CMAKE_PROJECTS
  "${PROJECT_BINARY_DIR};tqsmgr;program;/;${PROJECT_BINARY_DIR};tqsmgr;package;/")
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The tqsmgr authors <authors@tqsmgr.invalid>")
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS passwd)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"inventory of a console-management system
tqsmgr keeps the inventory of a console-management system: the platforms
behind terminal servers or NAT devices, and their consoles. Each run performs
one checked action on one XML file, regenerates the console daemon's
configuration, tells other components of the change, and leaves an entry in
a log that is itself a shell script.
.
tqs looks at such an inventory, judges it, compares it with another, and
changes it in bulk.")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${packaging}/postinst ${packaging}/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
