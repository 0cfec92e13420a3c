# Packages: `cpack -G DEB` makes libmodiffengine1, libmodiffengine-dev and modiff, `cpack -G TGZ` one archive that may be
# unpacked anywhere. scripts/packages.sh makes them so that they come out the same, byte for byte, whenever that is.
set(CPACK_PACKAGE_NAME modiff)
set(CPACK_PACKAGE_VENDOR "libMoDiffEngine")
set(CPACK_PACKAGE_CONTACT "libMoDiffEngine maintainers <maintainers@modiff.invalid>" CACHE STRING
    "Who maintains the packages: a name and an address")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development program)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/MoDiffSameTimes.cmake)
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(about "Compares HTML, MHT, XML, spreadsheet, CSV, PDF and chart files of a report
server with stored masters, after what changes from one rendering to the next
has been deleted.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libmodiffengine${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "${about}

This package holds the library.")
# Whoever installs a library tells the loader by a trigger, and other packages which one to ask for: once, although it
# holds the library twice.
set(package_documents ${PROJECT_BINARY_DIR}/package)
configure_file(${PROJECT_SOURCE_DIR}/share/debian/shlibs.in ${package_documents}/shlibs @ONLY)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/share/debian/triggers ${package_documents}/shlibs)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libmodiffengine-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libmodiffengine${PROJECT_VERSION_MAJOR} ${same_version}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${about}

This package holds headers, CMake package and pkg-config file.")

# What the scripts for XLSX, PDF and VMD need is recommended: all other formats do without; `modiff doctor` names it.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME modiff)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "libmodiffengine${PROJECT_VERSION_MAJOR} ${same_version}")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS
    "python3, python-is-python3, python3-openpyxl, python3-defusedxml, python3-pil, poppler-utils, poppler-data, qpdf")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS "git, less, bash-completion")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "${about}

This package holds the program, the scripts that compare XLSX, PDF and VMD
files, and what Bazel and CI servers take to run it.")

# Each package's own documents.
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC) # of SOURCE_DATE_EPOCH, where it is set
string(TIMESTAMP package_year "%Y" UTC)
configure_file(${PROJECT_SOURCE_DIR}/share/debian/copyright.in ${package_documents}/copyright @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/share/debian/changelog.in ${package_documents}/changelog.Debian @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${package_documents}/changelog COPYONLY)
foreach(document IN ITEMS changelog.Debian changelog)
    execute_process(COMMAND gzip -9nf ${package_documents}/${document})
endforeach()
foreach(component IN ITEMS LIBRARY DEVELOPMENT PROGRAM)
    string(TOLOWER ${component} component_name)
    set(document_directory ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${component}_PACKAGE_NAME})
    install(FILES ${package_documents}/copyright ${package_documents}/changelog.Debian.gz
        ${package_documents}/changelog.gz DESTINATION ${document_directory} COMPONENT ${component_name})
endforeach()
# The samples are reports as a server makes them, links to it included: packed, so that no browser follows them.
set(epoch $ENV{SOURCE_DATE_EPOCH})
if(NOT epoch)
    string(TIMESTAMP epoch "%s" UTC)
endif()
execute_process(COMMAND tar --sort=name --mtime=@${epoch} --owner=0 --group=0 --numeric-owner --mode=u=rwX,go=rX
    --format=gnu -C ${PROJECT_SOURCE_DIR}/samples -cf ${package_documents}/server.tar server
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND gzip -9nf ${package_documents}/server.tar COMMAND_ERROR_IS_FATAL ANY)
install(FILES ${package_documents}/server.tar.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/modiff/examples
    COMPONENT program)

include(CPack)
