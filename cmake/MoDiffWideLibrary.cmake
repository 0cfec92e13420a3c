# The library once more, its cleansing compiled for processors with wide vector instructions, in the folder below the
# library's own where the loader looks first on such a processor.
set(MODIFF_WIDE_LEVEL x86-64-v3)
check_cxx_compiler_flag(-march=${MODIFF_WIDE_LEVEL} MODIFF_KNOWS_WIDE_LEVEL)
set(default OFF)
if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND MODIFF_IS_X86_64 AND MODIFF_KNOWS_WIDE_LEVEL AND MODIFF_IS_TOP_LEVEL
        AND CMAKE_BUILD_TYPE MATCHES "^Rel" AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize|--coverage|-march")
    set(default ON)
endif()
option(MODIFF_WIDE "Build the library a second time for ${MODIFF_WIDE_LEVEL} processors" ${default})

if(MODIFF_WIDE)
    set(MODIFF_WIDE_FOLDER glibc-hwcaps/${MODIFF_WIDE_LEVEL})
    add_library(MoDiffCleansingWide OBJECT ${MODIFF_CLEANSING_SOURCES})
    modiff_compile_cleansing(MoDiffCleansingWide)
    target_compile_options(MoDiffCleansingWide PRIVATE -march=${MODIFF_WIDE_LEVEL})
    add_library(MoDiffEngineWide SHARED)
    modiff_link_library(MoDiffEngineWide MoDiffCleansingWide)
    set_target_properties(MoDiffEngineWide PROPERTIES OUTPUT_NAME MoDiffEngine
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${MODIFF_WIDE_FOLDER})
    add_dependencies(MoDiffEngine MoDiffEngineWide) # or the loader might take one of an earlier build
    install(TARGETS MoDiffEngineWide LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${MODIFF_WIDE_FOLDER}
        COMPONENT library NAMELINK_SKIP)
endif()
