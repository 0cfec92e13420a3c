# Pages of the public headers: the target documentation. They fail at the first warning; status 77 without doxygen.
string(REPLACE ";" " " doxygen_input "${MODIFF_PUBLIC_HEADERS}")
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
find_program(MODIFF_DOXYGEN doxygen)
if(MODIFF_DOXYGEN)
    set(MODIFF_DOCUMENT ${MODIFF_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile)
else()
    set(MODIFF_DOCUMENT sh -c "echo NOT RUN: there is no doxygen && exit 77")
endif()
add_custom_target(documentation COMMAND ${MODIFF_DOCUMENT} VERBATIM
    COMMENT "Writing the pages of the public headers to ${PROJECT_BINARY_DIR}/documentation/html")
