# The Debian packages of the plugins, one each.

set(babeltrace2_summary "raw files of audio driver traces in Babeltrace 2")
set(babeltrace2_text "Prints, trims and merges them, and writes them as CTF traces.")
set(kernelshark_summary "raw files of audio driver traces in KernelShark")
set(kernelshark_text "Shows them by processor and thread: kernelshark -p sonaprobe FILE")
foreach(plugin IN LISTS plugins)
  set(component sonaprobe-${plugin})
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  install(FILES cmake/debian/copyright ${PROJECT_BINARY_DIR}/install/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${component} COMPONENT ${component})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${component})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${${plugin}_summary}\n${${plugin}_text}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS ${plugin})
endforeach()
