# Installs the built tree into a scratch prefix and builds tests/package
# against it twice: with find_package(kaldata) and with pkg-config kaldata.
set(prefix ${KALDATA_WORK_DIR}/prefix)
file(REMOVE_RECURSE ${KALDATA_WORK_DIR})
file(MAKE_DIRECTORY ${KALDATA_WORK_DIR})

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGV}\n${out}\n${err}")
  endif()
  set(LAST_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

string(REPLACE ";" " " flags "${KALDATA_EXTRA_FLAGS}")
run(${CMAKE_COMMAND} --install ${KALDATA_BINARY_DIR} --prefix ${prefix})

file(GLOB libdirs ${prefix}/lib*)
file(GLOB_RECURSE pcfile ${prefix}/kaldata.pc)
get_filename_component(pcdir ${pcfile} DIRECTORY)
get_filename_component(libdir ${pcdir} DIRECTORY)
set(ENV{LD_LIBRARY_PATH} ${libdir})

# 1. CMake package
run(${CMAKE_COMMAND} -S ${KALDATA_PACKAGE_SOURCE} -B ${KALDATA_WORK_DIR}/cmake-build
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${KALDATA_CXX} "-DCMAKE_CXX_FLAGS=${flags}")
run(${CMAKE_COMMAND} --build ${KALDATA_WORK_DIR}/cmake-build)
run(${KALDATA_WORK_DIR}/cmake-build/consumer)
message(STATUS "cmake consumer: ${LAST_OUTPUT}")

# 2. pkg-config
set(ENV{PKG_CONFIG_PATH} ${pcdir})
run(pkg-config --cflags --libs kaldata)
string(STRIP "${LAST_OUTPUT}" pc)
separate_arguments(pc UNIX_COMMAND "${pc}")
separate_arguments(extra UNIX_COMMAND "${flags}")
run(${KALDATA_CXX} -std=c++17 ${extra} ${KALDATA_PACKAGE_SOURCE}/main.cpp ${pc} -o ${KALDATA_WORK_DIR}/pc-consumer)
run(${KALDATA_WORK_DIR}/pc-consumer)
message(STATUS "pkg-config consumer: ${LAST_OUTPUT}")
