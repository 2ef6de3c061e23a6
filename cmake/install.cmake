# What is installed where: `cmake --install BUILD [--component program]`. Components: program, unless
# a rule says another; library, the shared library; development, what programs that use it are built
# with; each plugin.

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME program)
set(SONAPROBE_DOC_DIR ${CMAKE_INSTALL_DATADIR}/doc/sonaprobe)

set(programs sonaprobe)
if(TARGET sonaprobe-sim)
  list(APPEND programs sonaprobe-sim)
endif()

# compressed(SOURCE TARGET): a file of the source folder under build/install, as Debian wants it.
function(compressed source target)
  set(input ${PROJECT_SOURCE_DIR}/${source})
  set(output ${PROJECT_BINARY_DIR}/install/${target})
  add_custom_command(
    OUTPUT ${output}
    COMMAND gzip -9nc ${input} > ${output}
    DEPENDS ${input}
    VERBATIM)
  set_property(GLOBAL APPEND PROPERTY SONAPROBE_COMPRESSED ${output})
endfunction()

# install_for_zsh(FILE NAME): Debian's zsh looks for packages' functions in a folder of their own.
function(install_for_zsh file name)
  install(
    CODE "set(folder site-functions)
          if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
            set(folder vendor-completions)
          endif()
          file(INSTALL \"${file}\" RENAME ${name}
               DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/zsh/\${folder}\")")
endfunction()

# install_for_lnav(FILE): lnav looks for packages' formats below /etc.
function(install_for_lnav file)
  install(
    CODE "set(folder \"\${CMAKE_INSTALL_PREFIX}/etc\")
          if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
            set(folder /etc)
          endif()
          file(INSTALL \"${file}\" DESTINATION \"\${folder}/lnav/formats/sonascope\")")
endfunction()

file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/install)
compressed(cmake/debian/changelog changelog.gz)
foreach(program ${programs})
  compressed(man/${program}.8 ${program}.8.gz)
  install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR})
  install(FILES ${PROJECT_BINARY_DIR}/install/${program}.8.gz
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
  install(FILES completion/bash/${program}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install_for_zsh(${PROJECT_SOURCE_DIR}/completion/zsh/_${program} _${program})
endforeach()

compressed(man/sonaprobe.raw.5 sonaprobe.raw.5.gz)
install(FILES ${PROJECT_BINARY_DIR}/install/sonaprobe.raw.5.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)

if(SONAPROBE_SCOPE)
  # sonascope is for everybody; its completion is printed by itself, from the tables of its parser.
  compressed(man/sonascope.1 sonascope.1.gz)
  install(TARGETS sonascope RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${PROJECT_BINARY_DIR}/install/sonascope.1.gz
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  foreach(shell bash zsh fish)
    set(output ${PROJECT_BINARY_DIR}/install/sonascope.${shell})
    add_custom_command(
      OUTPUT ${output}
      COMMAND sonascope completion ${shell} > ${output}
      DEPENDS sonascope
      VERBATIM)
    list(APPEND completions ${output})
  endforeach()
  add_custom_target(sonascope_completion ALL DEPENDS ${completions})
  install(FILES ${PROJECT_BINARY_DIR}/install/sonascope.bash RENAME sonascope
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${PROJECT_BINARY_DIR}/install/sonascope.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  install_for_zsh(${PROJECT_BINARY_DIR}/install/sonascope.zsh _sonascope)
  install_for_lnav(${PROJECT_SOURCE_DIR}/plugins/lnav/sonascope.json)
endif()

get_property(compressed_files GLOBAL PROPERTY SONAPROBE_COMPRESSED)
add_custom_target(sonaprobe_install_files DEPENDS ${compressed_files})
# Whoever has built the programs alone can install them.
add_dependencies(sonaprobe sonaprobe_install_files)

file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
# As in the sources, so that the pages' links lead somewhere.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${SONAPROBE_DOC_DIR})
install(FILES ${pages} DESTINATION ${SONAPROBE_DOC_DIR}/docs)
install(DIRECTORY docs/images docs/sample docs/schema DESTINATION ${SONAPROBE_DOC_DIR}/docs)

set(SONAPROBE_CONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/sonaprobe)
install(
  TARGETS sonaprobe_shared
  EXPORT sonaprobe
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT library
          NAMELINK_COMPONENT development)
install(DIRECTORY include/sonaprobe DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY examples DESTINATION ${SONAPROBE_DOC_DIR} COMPONENT development)
# find_package(sonaprobe) gives the target sonaprobe::sonaprobe, which is all of the package.
install(
  EXPORT sonaprobe
  FILE sonaprobe-config.cmake
  NAMESPACE sonaprobe::
  DESTINATION ${SONAPROBE_CONFIG_DIR}
  COMPONENT development)
include(CMakePackageConfigHelpers)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/install/sonaprobe-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/install/sonaprobe-config-version.cmake
        DESTINATION ${SONAPROBE_CONFIG_DIR} COMPONENT development)
# By its own place, so that the installed tree can be moved.
set(SONAPROBE_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
string(REGEX REPLACE "[^/]+" ".." SONAPROBE_PREFIX_FROM_PKGCONFIG ${SONAPROBE_PKGCONFIG_DIR})
configure_file(cmake/sonaprobe.pc.in ${PROJECT_BINARY_DIR}/install/sonaprobe.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/install/sonaprobe.pc DESTINATION ${SONAPROBE_PKGCONFIG_DIR}
        COMPONENT development)
