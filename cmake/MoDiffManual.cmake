# Manual pages and completion of shells. The pages are made by the program that they describe, so they are left out
# where it cannot run or there is no python to write them.
find_package(Python3 3.11 COMPONENTS Interpreter)
if(NOT Python3_FOUND OR CMAKE_CROSSCOMPILING OR CMAKE_CROSSCOMPILING_EMULATOR)
    message(STATUS "No manual pages: they take python 3.11 and a program that runs on this machine")
    return()
endif()

set(MODIFF_MANUAL_DIR ${PROJECT_BINARY_DIR}/manual)
set(manual_source ${PROJECT_SOURCE_DIR}/docs/manual)
add_custom_command(OUTPUT ${MODIFF_MANUAL_DIR}.stamp
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${MODIFF_MANUAL_DIR}
    COMMAND Python3::Interpreter ${manual_source}/make_manual.py $<TARGET_FILE:modiff> ${MODIFF_MANUAL_DIR}
    COMMAND ${CMAKE_COMMAND} -E touch ${MODIFF_MANUAL_DIR}.stamp
    DEPENDS modiff ${manual_source}/make_manual.py ${manual_source}/pages.toml ${PROJECT_SOURCE_DIR}/docs/embedding.md
        ${MODIFF_PUBLIC_HEADERS}
    COMMENT "Writing the manual pages" VERBATIM)
add_custom_target(manual ALL DEPENDS ${MODIFF_MANUAL_DIR}.stamp)

foreach(section IN ITEMS 1 3 5)
    set(component program)
    if(section EQUAL 3)
        set(component development)
    endif()
    install(DIRECTORY ${MODIFF_MANUAL_DIR}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component}
        FILES_MATCHING PATTERN "*.${section}.gz")
endforeach()
set(completion ${PROJECT_SOURCE_DIR}/share/completion)
install(FILES ${completion}/modiff.bash RENAME modiff COMPONENT program
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${completion}/_modiff DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT program)
install(FILES ${completion}/modiff.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT program)
