# Installs the library into a fresh directory, moves that away, and has a program that knows only the README built
# against it: once by find_package and once by pkg-config. With the sources as a sub-directory it is only configured.
# Needs SOURCE_DIR, BUILD_DIR, WORK_DIR, LIBDIR, COMPILER and FLAGS.

set(consumer ${SOURCE_DIR}/tests/consumer)
set(prefix ${WORK_DIR}/moved)
set(options -G Ninja -DCMAKE_CXX_COMPILER=${COMPILER} "-DCMAKE_CXX_FLAGS=${FLAGS}")

function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${ARGV}: ${status}\n${output}")
    endif()
endfunction()

function(check_program program)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${program}
        WORKING_DIRECTORY ${SOURCE_DIR}/samples/server/run OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    set(masters reports/sales/Masters)
    string(CONCAT expected "passed ${masters}/Sales.html\n" "passed ${masters}/SalesTargets.html\n"
        "passed ${masters}/Sales_page2.html\n" "FAILED ${masters}/Sales_page3.html\n")
    if(NOT output STREQUAL expected)
        message(FATAL_ERROR "${program} printed\n${output}instead of\n${expected}")
    endif()
endfunction()

file(READ ${SOURCE_DIR}/README.md readme)
file(READ ${consumer}/consumer.cpp program)
string(FIND "${readme}" "${program}" place)
if(place EQUAL -1)
    message(FATAL_ERROR "README.md shows another program than consumer.cpp")
endif()

file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/staged)
file(RENAME ${WORK_DIR}/staged ${prefix})
run(${prefix}/bin/modiff install-tools ${WORK_DIR}/tools)

run(${CMAKE_COMMAND} -S ${consumer} -B ${WORK_DIR}/found ${options} -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/found)
check_program(${WORK_DIR}/found/consumer)

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs MoDiffEngine OUTPUT_VARIABLE flags COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${FLAGS} ${flags}")
run(${COMPILER} -std=c++17 ${consumer}/consumer.cpp -o ${WORK_DIR}/by_pkg_config ${flags})
check_program(${WORK_DIR}/by_pkg_config)

run(${CMAKE_COMMAND} -S ${consumer} -B ${WORK_DIR}/added ${options} -DMODIFF_SOURCE_DIR=${SOURCE_DIR})
