# Installation and the Debian package.
#
# `cmake --install <build>` puts veltrak in sbin, its manual page in section
# 8 and its documentation in the doc directory; `make package` (cpack -G DEB)
# wraps exactly these files in a .deb.
#
# Everything here belongs to the install component "veltrak", the only one
# packaged: the program, and its two drive tools in a directory of their own
# that only root may enter, so that `cd /usr/lib/veltrak && veltrak` is a
# complete set-up. The emulated drive stays out: it answers as disks and has
# no place on an administrator's machine.

include(GNUInstallDirs)

# Manual pages and larger documents are installed gzipped, as Debian policy
# asks for everything under /usr/share/man and /usr/share/doc and as man(1)
# reads them anywhere. -n leaves name and time stamp out of the gzip header,
# so the same sources give the same package. Without gzip they are installed
# as they are.
find_program(VELTRAK_GZIP gzip)

set(VELTRAK_DOC_BUILD_DIR ${CMAKE_BINARY_DIR}/doc)
set(VELTRAK_DOC_OUTPUTS "")

# Sets <out_var> to the file to install for <source>, installed as <name>:
# <name>.gz built from <source> when gzip is there, else <source> itself.
function(veltrak_doc_file source name out_var)
  if(VELTRAK_GZIP)
    set(plain ${VELTRAK_DOC_BUILD_DIR}/${name})
    add_custom_command(
      OUTPUT ${plain}.gz
      COMMAND ${CMAKE_COMMAND} -E make_directory ${VELTRAK_DOC_BUILD_DIR}
      COMMAND ${CMAKE_COMMAND} -E copy ${source} ${plain}
      COMMAND ${VELTRAK_GZIP} -9 -n -f ${plain}
      DEPENDS ${source}
      COMMENT "Compressing ${name}"
      VERBATIM)
    set(${out_var} ${plain}.gz PARENT_SCOPE)
    set(VELTRAK_DOC_OUTPUTS ${VELTRAK_DOC_OUTPUTS} ${plain}.gz PARENT_SCOPE)
  else()
    configure_file(${source} ${VELTRAK_DOC_BUILD_DIR}/${name} COPYONLY)
    set(${out_var} ${VELTRAK_DOC_BUILD_DIR}/${name} PARENT_SCOPE)
  endif()
endfunction()

veltrak_doc_file(${PROJECT_SOURCE_DIR}/docs/veltrak.8 veltrak.8 VELTRAK_MAN_PAGE)
veltrak_doc_file(${PROJECT_SOURCE_DIR}/docs/veltrak-opal.8 veltrak-opal.8 VELTRAK_TOOLS_MAN_PAGE)
veltrak_doc_file(${PROJECT_SOURCE_DIR}/README.md README.md VELTRAK_README)
veltrak_doc_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md changelog VELTRAK_CHANGELOG)
add_custom_target(veltrak_docs ALL DEPENDS ${VELTRAK_DOC_OUTPUTS})

install(TARGETS veltrak
  RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR}
  COMPONENT veltrak)
# The tools: veltrak-opal under the two names Veltrak runs.
set(VELTRAK_TOOLS_DIR lib/veltrak)
install(DIRECTORY DESTINATION ${VELTRAK_TOOLS_DIR}
  DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  COMPONENT veltrak)
install(TARGETS veltrak-opal
  RUNTIME DESTINATION ${VELTRAK_TOOLS_DIR}
  COMPONENT veltrak)
foreach(tool sedutil-cli Lantivo)
  install(CODE "file(CREATE_LINK veltrak-opal \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${VELTRAK_TOOLS_DIR}/${tool}\" SYMBOLIC)"
    COMPONENT veltrak)
endforeach()
install(FILES ${VELTRAK_MAN_PAGE} ${VELTRAK_TOOLS_MAN_PAGE}
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man8
  COMPONENT veltrak)
install(FILES ${VELTRAK_README} ${VELTRAK_CHANGELOG}
  DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT veltrak)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/copyright
  DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT veltrak)

# --- Debian package --------------------------------------------------------

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME veltrak)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Veltrak developers")
set(CPACK_PACKAGE_CONTACT "Veltrak maintainers <maintainers@users.noreply.c-seed-c83aaf72.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "console manager for self-encrypting (TCG Opal) drives")
set(CPACK_PACKAGE_DESCRIPTION
"Veltrak is an interactive text-menu program with which an administrator
takes ownership of TCG Opal drives, binds them to the machine, defines
locking ranges and their protection mode, enables users and grants them
lock privileges, loads a pre-boot image into the shadow MBR, reverts
drives and erases them with the PSID.

It drives two tools in the directory it is started from, sedutil-cli and
Lantivo. This package brings its own, veltrak-opal, which speaks TCG Opal
to NVMe and SATA drives itself: start veltrak in /usr/lib/veltrak as root.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)

# One package holding only the "veltrak" component, whatever else the build
# tree installs.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL veltrak)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Library dependencies are computed by dpkg-shlibdeps (package dpkg-dev).
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The flash lock reads the machine UUID with `sudo dmidecode`.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "sudo, dmidecode")

include(CPack)
