# Installed layout: the program and its Questions folder in one folder, a
# launcher on PATH, and the all-users data tree the program insists on.
include(GNUInstallDirs)
set(KESTA_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/kesta-demo)

# Only the data tree is shared. Everything else is writable by its owner alone,
# whatever the umask of whoever installs or packages it: the banks come out of
# kesta-qbank writable by all, and folders made on the way would follow the umask.
set(KESTA_PROGRAM_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(KESTA_FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${KESTA_PROGRAM_PERMISSIONS})

install(TARGETS kesta-qbank RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} PERMISSIONS ${KESTA_PROGRAM_PERMISSIONS}
        COMPONENT program)
if(KESTA_BUILD_GUI)
  install(TARGETS kesta-demo RUNTIME DESTINATION ${KESTA_INSTALL_DIR} PERMISSIONS ${KESTA_PROGRAM_PERMISSIONS}
          COMPONENT program)
  install(DIRECTORY ${KESTA_BIN_DIR}/Questions DESTINATION ${KESTA_INSTALL_DIR}
          FILE_PERMISSIONS ${KESTA_FILE_PERMISSIONS} DIRECTORY_PERMISSIONS ${KESTA_PROGRAM_PERMISSIONS}
          COMPONENT program)
  # The launcher's folder exists already: kesta-qbank went there first.
  install(CODE "
    file(CREATE_LINK \"../${KESTA_INSTALL_DIR}/kesta-demo\"
         \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/kesta-demo\" SYMBOLIC)
  " COMPONENT program)
endif()

# The data tree: every user reads and writes progress, scores, the options and the log.
# It is user data, so the Debian package leaves it out and makes it in its post-install step.
install(CODE "
  set(root \"\$ENV{DESTDIR}${KESTA_COMMON_APPDATA}\")
  foreach(dir MORVO MORVO/KESTA MORVO/KESTA/All MORVO/KESTA/All/Log MORVO/KESTA/All/User)
    file(MAKE_DIRECTORY \"\${root}/\${dir}\")
    file(CHMOD \"\${root}/\${dir}\" DIRECTORY_PERMISSIONS
         OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_WRITE GROUP_EXECUTE
         WORLD_READ WORLD_WRITE WORLD_EXECUTE)
  endforeach()
  # Ship the default options, so a first test does not greet the user with a repair notice.
  set(options \"\${root}/MORVO/KESTA/All/User/option.usr\")
  if(NOT EXISTS \"\${options}\")
    string(ASCII 13 cr)
    file(WRITE \"\${options}\" \"1\${cr}\n0\${cr}\n0\${cr}\n1\${cr}\n30\${cr}\n5\")
    file(CHMOD \"\${options}\" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ GROUP_WRITE WORLD_READ WORLD_WRITE)
  endif()
" COMPONENT datatree)

if(KESTA_BUILD_GUI)
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/kesta-demo.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications
          PERMISSIONS ${KESTA_FILE_PERMISSIONS} COMPONENT program)
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/kesta-demo.svg
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps PERMISSIONS ${KESTA_FILE_PERMISSIONS}
          COMPONENT program)
endif()

# A Debian package of the system install; its post-install step makes the data tree.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL program)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_PACKAGE_NAME kesta-demo)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "KESTA developers <dev@kesta.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Practice exams and domain quizzes for an IT certification")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION education)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/packaging/postinst)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
include(CPack)
