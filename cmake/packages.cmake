# The Debian packages: `cpack --config BUILD/CPackConfig.cmake` makes one of the programs with their
# library, one of what programs that use the library are built with, and one of each plugin.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sonaprobe)
set(CPACK_PACKAGE_CONTACT "sonaprobe developers <sonaprobe@packages.invalid>"
    CACHE STRING "Maintainer of the package")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each description begins with its own
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
# The paths of the package, whatever prefix the build is configured for.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)

# package(NAME SECTION DESCRIPTION COMPONENT...): what else is set of it is called
# CPACK_DEBIAN_<NAME in capitals>_...
set(CPACK_COMPONENTS_ALL)
macro(package name section description)
  string(TOUPPER ${name} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${description}")
  foreach(component ${ARGN})
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    string(TOUPPER ${component} component)
    set(CPACK_COMPONENT_${component}_GROUP ${name})
  endforeach()
endmacro()

# papers_of(NAME COMPONENT): what Debian wants each package to have of its own, and where it has
# reasons to differ from what lintian expects.
function(papers_of name component)
  install(FILES cmake/debian/copyright ${PROJECT_BINARY_DIR}/install/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
  if(EXISTS ${PROJECT_SOURCE_DIR}/cmake/debian/${name}.overrides)
    install(FILES cmake/debian/${name}.overrides RENAME ${name}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${component})
  endif()
endfunction()

package(
  sonaprobe sound
  "live and offline reader of audio driver traces\n\
Switches the audio drivers' trace points on, empties the kernel's trace\n\
buffer and prints each record as one readable line: when, on which\n\
thread, which driver and method, which object, and what it had to say.\n\
Keeps raw records in a file, and prints such a file on any machine;\n\
sonascope says of such a file why the sound broke off. The library\n\
reads it for other programs.\n\
.\n\
Where the kernel has no trace facility of this kind, sonaprobe uses a\n\
stand-in in shared memory, and sonaprobe-sim plays its drivers."
  program library)
get_target_property(abi sonaprobe_shared SOVERSION)
file(WRITE ${PROJECT_BINARY_DIR}/install/shlibs
     "libsonaprobe ${abi} sonaprobe (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_SONAPROBE_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/install/shlibs ${PROJECT_SOURCE_DIR}/cmake/debian/conffiles
    ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
papers_of(sonaprobe program)

package(
  libsonaprobe-dev libdevel
  "reads traces of audio drivers from C programs\n\
The header of libsonaprobe, its files for pkg-config and CMake, and an\n\
example."
  development)
set(CPACK_DEBIAN_LIBSONAPROBE-DEV_PACKAGE_DEPENDS "sonaprobe (= ${PROJECT_VERSION})")
papers_of(libsonaprobe-dev development)

set(babeltrace2_text
    "raw files of audio driver traces in Babeltrace 2\n\
Prints, trims and merges them, and writes them as CTF traces.")
set(kernelshark_text
    "raw files of audio driver traces in KernelShark\n\
Shows them by processor and thread: kernelshark -p sonaprobe FILE")
get_property(plugins GLOBAL PROPERTY SONAPROBE_PLUGINS)
foreach(plugin IN LISTS plugins)
  package(sonaprobe-${plugin} sound "${${plugin}_text}" sonaprobe-${plugin})
  set(CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS ${plugin})
  papers_of(sonaprobe-${plugin} sonaprobe-${plugin})
endforeach()
include(CPack)
