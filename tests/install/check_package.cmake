# Installs the library to a prefix, moves the prefix elsewhere, and builds and runs two host programs against it, one in
# C11 and one in C++17: first through the CMake package, then with nothing but a compiler and pkg-config.
cmake_minimum_required(VERSION 3.25)

set(prefix ${WORK_DIR}/prefix)
set(consumer_cpp ${CMAKE_CURRENT_LIST_DIR}/consumer.cpp)

function(run what)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${what} failed (${result}): ${command}\n${output}")
    endif()
    string(STRIP "${output}" output)
    message(STATUS "${what}: ok")
    set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
run("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/first-prefix)
file(RENAME ${WORK_DIR}/first-prefix ${prefix})

run("find_package, configure" ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/find_package -B ${WORK_DIR}/find_package
    -G ${GENERATOR} -DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}
    -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    -DCMAKE_C_FLAGS=${EXTRA_FLAGS} -DCMAKE_CXX_FLAGS=${EXTRA_FLAGS}
    -DCMAKE_PREFIX_PATH=${prefix} -DPLENAR_PREFIX=${prefix} -DPLENAR_VERSION=${VERSION} -DPLENAR_EXAMPLE=${EXAMPLE})
run("find_package, build" ${CMAKE_COMMAND} --build ${WORK_DIR}/find_package)
run("find_package, C11 program" ${WORK_DIR}/find_package/consumer_c)
run("find_package, C++17 program" ${WORK_DIR}/find_package/consumer_cpp)

file(GLOB_RECURSE pc_file ${prefix}/*/PlenarSDK.pc)
cmake_path(GET pc_file PARENT_PATH pc_dir)
set(pkg_config ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${pc_dir} ${PKG_CONFIG})
run("pkg-config, version" ${pkg_config} --modversion PlenarSDK)
if(NOT output STREQUAL VERSION)
    message(FATAL_ERROR "pkg-config says version ${output}, not ${VERSION}")
endif()
run("pkg-config, flags" ${pkg_config} --cflags --libs PlenarSDK)
separate_arguments(flags UNIX_COMMAND "${output}")
run("pkg-config, C11 build" ${C_COMPILER} -std=c11 ${EXTRA_FLAGS} ${EXAMPLE} -o ${WORK_DIR}/consumer_c ${flags})
run("pkg-config, C++17 build" ${CXX_COMPILER} -std=c++17 -DPACKAGE_VERSION="${VERSION}" ${EXTRA_FLAGS} ${consumer_cpp}
    -o ${WORK_DIR}/consumer_cpp ${flags})
file(GLOB_RECURSE library ${prefix}/*/libPlenarSDK.so)
cmake_path(GET library PARENT_PATH library_dir)
set(with_library ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${library_dir})
run("pkg-config, C11 program" ${with_library} ${WORK_DIR}/consumer_c)
run("pkg-config, C++17 program" ${with_library} ${WORK_DIR}/consumer_cpp)
