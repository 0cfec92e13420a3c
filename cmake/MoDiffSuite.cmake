# modiff_add_suite(NAME CONFIG [SHARDS n] [JOBS n] [TIMEOUT seconds] [LABELS label...] [OUT dir] [ARGS option...])
#
# Makes ctest cases of what the configuration CONFIG of modiff says. Without SHARDS it is one case, NAME. With SHARDS n
# these are
#
#   NAME.begin          removes the records of an earlier run, so that none is ever joined
#   NAME.shard1of<n>    and so on: compares a part; fails when it leaves no whole record, whatever differs
#   NAME                joins the records and gives the verdict; when a shard failed, it is not run, and fails
#
# and whichever case is chosen, ctest runs those that it needs. Differences fail NAME alone.
#
# CONFIG   a configuration, from the current source directory. It is run where it lies.
# JOBS     how many processes a case compares with, and how many slots of `ctest -j` it takes; with SHARDS 1 by
#          default, otherwise the cores.
# TIMEOUT  of each case that compares.
# LABELS   beside "modiff" and NAME, which all cases have.
# OUT      where the records and the test cases, junit.xml, are written, from the current binary directory; by default
#          NAME. The verdict's record is OUT/all.
# ARGS     further options of `modiff run`, such as --format html.
#
# The whole suite is compared whatever the variables of test runners say that split it otherwise. MODIFF_EXECUTABLE may
# name another program than the one that is installed.

function(modiff_add_suite name config)
    cmake_parse_arguments(PARSE_ARGV 2 suite "" "SHARDS;JOBS;TIMEOUT;OUT" "LABELS;ARGS")
    if(suite_UNPARSED_ARGUMENTS OR suite_KEYWORDS_MISSING_VALUES)
        message(FATAL_ERROR "modiff_add_suite: this is not understood, or lacks a value: "
            "${suite_UNPARSED_ARGUMENTS}${suite_KEYWORDS_MISSING_VALUES}")
    endif()
    foreach(number IN ITEMS SHARDS JOBS TIMEOUT)
        if(DEFINED suite_${number} AND NOT suite_${number} MATCHES "^[1-9][0-9]*$")
            message(FATAL_ERROR "modiff_add_suite: ${number} takes a number from 1, not \"${suite_${number}}\"")
        endif()
    endforeach()
    get_filename_component(config ${config} ABSOLUTE)
    if(NOT EXISTS ${config})
        message(FATAL_ERROR "modiff_add_suite: there is no configuration ${config}")
    endif()
    _modiff_find_program(program)
    if(NOT DEFINED suite_OUT)
        set(suite_OUT ${name})
    endif()
    get_filename_component(out ${suite_OUT} ABSOLUTE BASE_DIR ${CMAKE_CURRENT_BINARY_DIR})
    if(NOT DEFINED suite_JOBS)
        set(suite_JOBS 1)
        if(NOT DEFINED suite_SHARDS)
            cmake_host_system_information(RESULT suite_JOBS QUERY NUMBER_OF_LOGICAL_CORES)
        endif()
    endif()

    set(options --config ${config} --jobs ${suite_JOBS} ${suite_ARGS})
    if(NOT DEFINED suite_SHARDS)
        _modiff_add_case(${name} whole ${out} ${program} ${options})
        return()
    endif()
    _modiff_add_case(${name}.begin begin ${out})
    set_tests_properties(${name}.begin PROPERTIES FIXTURES_SETUP ${name}.begin)
    foreach(index RANGE 1 ${suite_SHARDS})
        set(shard ${name}.shard${index}of${suite_SHARDS})
        _modiff_add_case(${shard} shard ${out} ${program} ${index}/${suite_SHARDS} ${options})
        set_tests_properties(${shard} PROPERTIES FIXTURES_REQUIRED ${name}.begin FIXTURES_SETUP ${name}.shards)
    endforeach()
    _modiff_add_case(${name} merge ${out} ${program} ${suite_SHARDS})
    set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED ${name}.shards)
endfunction()

# The program of a build that makes it, the one that is named, or the one that the package found beside itself.
function(_modiff_find_program result)
    if(TARGET modiff AND NOT MODIFF_EXECUTABLE)
        set(${result} $<TARGET_FILE:modiff> PARENT_SCOPE)
        return()
    endif()
    find_program(MODIFF_EXECUTABLE modiff DOC "The program that compares suites")
    if(NOT MODIFF_EXECUTABLE)
        message(FATAL_ERROR "modiff_add_suite: there is no program modiff, neither where MoDiffEngine is installed nor "
            "in PATH. Debian's package of it is modiff; -DMODIFF_EXECUTABLE=... names one that lies elsewhere.")
    endif()
    set(${result} ${MODIFF_EXECUTABLE} PARENT_SCOPE)
endfunction()

# Uses the variables of modiff_add_suite.
function(_modiff_add_case case step)
    add_test(NAME ${case} COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/modiff-suite.sh ${step} ${ARGN})
    get_filename_component(directory ${config} DIRECTORY)
    set(labels modiff ${name} ${suite_LABELS})
    set_tests_properties(${case} PROPERTIES LABELS "${labels}" WORKING_DIRECTORY ${directory})
    if(step MATCHES "shard|whole")
        set_tests_properties(${case} PROPERTIES PROCESSORS ${suite_JOBS})
        if(DEFINED suite_TIMEOUT)
            set_tests_properties(${case} PROPERTIES TIMEOUT ${suite_TIMEOUT})
        endif()
    endif()
endfunction()
