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
  # The launcher's folder exists already: kesta-qbank went there first. The
  # link is listed with the installed files, so an uninstall finds it.
  install(CODE "
    set(link \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/kesta-demo\")
    file(CREATE_LINK \"../${KESTA_INSTALL_DIR}/kesta-demo\" \"\${link}\" SYMBOLIC)
    list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${link}\")
  " COMPONENT program)
  # A stripped program also loses the sections that only name the compiler, as Debian's own builds do.
  install(CODE "
    if(CMAKE_INSTALL_DO_STRIP)
      foreach(kesta_program ${CMAKE_INSTALL_BINDIR}/kesta-qbank ${KESTA_INSTALL_DIR}/kesta-demo)
        execute_process(COMMAND \"${CMAKE_STRIP}\" --remove-section=.comment --remove-section=.note
                                \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/\${kesta_program}\" COMMAND_ERROR_IS_FATAL ANY)
      endforeach()
    endif()
  " COMPONENT program)

  # The desktop entry starts the launcher by its full path, known only when
  # installing (cmake --install --prefix): a session's PATH need not hold
  # ~/.local/bin. A path with characters the entry's Exec= treats specially is
  # quoted and escaped as the desktop entry format asks.
  install(CODE "set(kesta_entry_source \"${CMAKE_SOURCE_DIR}/packaging/kesta-demo.desktop\")
                set(kesta_entry_built \"${CMAKE_BINARY_DIR}/kesta-demo.desktop\")
                set(kesta_bindir \"${CMAKE_INSTALL_BINDIR}\")
                set(kesta_datadir \"${CMAKE_INSTALL_DATADIR}\")" COMPONENT program)
  install(CODE [[
    set(kesta_exec "${CMAKE_INSTALL_PREFIX}/${kesta_bindir}/kesta-demo")
    if(kesta_exec MATCHES "[\n\r]")
      message(FATAL_ERROR "a desktop entry cannot start a program whose path holds a line break: ${kesta_exec}")
    endif()
    if(kesta_exec MATCHES "[] \t\"'\\><~|&;$*?#()`[]")
      string(REPLACE "\\" "\\\\\\\\" kesta_exec "${kesta_exec}")
      foreach(kesta_special "\"" "`" "$")
        string(REPLACE "${kesta_special}" "\\\\${kesta_special}" kesta_exec "${kesta_exec}")
      endforeach()
      set(kesta_exec "\"${kesta_exec}\"")
    endif()
    string(REPLACE "%" "%%" kesta_exec "${kesta_exec}")
    file(READ "${kesta_entry_source}" kesta_entry)
    string(REPLACE "\nExec=kesta-demo\n" "\nExec=${kesta_exec}\n" kesta_entry "${kesta_entry}")
    file(WRITE "${kesta_entry_built}" "${kesta_entry}")
    file(INSTALL DESTINATION "${CMAKE_INSTALL_PREFIX}/${kesta_datadir}/applications" TYPE FILE
         FILES "${kesta_entry_built}"
         PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
         DIR_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  ]] COMPONENT program)
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/kesta-demo.svg
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps PERMISSIONS ${KESTA_FILE_PERMISSIONS}
          COMPONENT program)
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/example.kesta.demo.metainfo.xml
          DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo PERMISSIONS ${KESTA_FILE_PERMISSIONS} COMPONENT program)
endif()

# Manual pages and the changelog are compressed as Debian's policy asks:
# gzip -9, without a name or time stamp, so two builds give the same bytes.
find_program(KESTA_GZIP gzip REQUIRED)
set(KESTA_GZIPPED)
foreach(page IN ITEMS man/kesta-demo.1 man/kesta-qbank.1 changelog)
  get_filename_component(name ${page} NAME)
  set(gz ${CMAKE_BINARY_DIR}/packaging/${name}.gz)
  add_custom_command(OUTPUT ${gz}
    COMMAND sh -c "\"$0\" -9n -c \"$1\" > \"$2\"" ${KESTA_GZIP} ${CMAKE_SOURCE_DIR}/packaging/${page} ${gz}
    DEPENDS ${CMAKE_SOURCE_DIR}/packaging/${page} VERBATIM)
  list(APPEND KESTA_GZIPPED ${gz})
endforeach()
add_custom_target(kesta_docs ALL DEPENDS ${KESTA_GZIPPED})
set(KESTA_MAN_PAGES ${CMAKE_BINARY_DIR}/packaging/kesta-qbank.1.gz)
if(KESTA_BUILD_GUI)
  list(APPEND KESTA_MAN_PAGES ${CMAKE_BINARY_DIR}/packaging/kesta-demo.1.gz)
endif()
install(FILES ${KESTA_MAN_PAGES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 PERMISSIONS ${KESTA_FILE_PERMISSIONS}
        COMPONENT program)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/copyright ${CMAKE_BINARY_DIR}/packaging/changelog.gz
              ${CMAKE_SOURCE_DIR}/docs/question-banks.md
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kesta-demo PERMISSIONS ${KESTA_FILE_PERMISSIONS} COMPONENT program)
# The package's post-install step makes the data tree under /var/lib/; a program
# built for another data folder (a local install's) must not go into it.
install(CODE "if(NOT \"${KESTA_COMMON_APPDATA}\" STREQUAL \"/var/lib/\")
  message(FATAL_ERROR \"The package needs -DKESTA_COMMON_APPDATA=/var/lib/, not ${KESTA_COMMON_APPDATA}\")
endif()" COMPONENT debian EXCLUDE_FROM_ALL)
# Lintian reads these from the package only; an install of its own has no use for them.
install(FILES ${CMAKE_SOURCE_DIR}/packaging/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
        RENAME kesta-demo PERMISSIONS ${KESTA_FILE_PERMISSIONS} COMPONENT debian EXCLUDE_FROM_ALL)

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

# A Debian package of the system install; its post-install step makes the data
# tree and a purge removes it.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL program debian)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_PACKAGE_NAME kesta-demo)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "KESTA developers <dev@kesta.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Practice exams and domain quizzes for an IT certification")
set(CPACK_PACKAGE_DESCRIPTION
    "KESTA DEMO prepares for a professional IT certification. Pick a practice
exam or a quiz on one domain from the File menu and answer one
multiple-choice question at a time, with the buttons or the keys A to D,
against one countdown for the whole test. The results walk through every
wrong answer with the right one and its explanation. An unfinished test can
be saved and resumed; the last five scores of every test are kept.

The package also holds kesta-qbank, which builds, checks, imports (Aiken,
GIFT) and exports the enciphered question banks.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION education)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/packaging/postinst ${CMAKE_SOURCE_DIR}/packaging/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
set(CPACK_STRIP_FILES ON)
include(CPack)
