# SPDX-License-Identifier: Apache-2.0
# What a new user does after building: install into a prefix, then build the
# README's application (main.cpp is its app.cpp, CMakeLists.txt its CMake
# project) against the install, once with find_package and once with
# pkg-config, and run it, with no LD_LIBRARY_PATH. Where valgrind is given
# (builds without sanitizers), every program runs under memcheck and a
# definite leak fails; sanitizer builds catch leaks with LeakSanitizer.
set(prefix ${KALDATA_WORK_DIR}/prefix)
file(REMOVE_RECURSE ${KALDATA_WORK_DIR})
file(MAKE_DIRECTORY ${KALDATA_WORK_DIR})
unset(ENV{LD_LIBRARY_PATH})

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGV}\n${out}\n${err}")
  endif()
  set(LAST_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

set(memcheck "")
if(KALDATA_VALGRIND)
  set(memcheck ${KALDATA_VALGRIND} --quiet --error-exitcode=1 --leak-check=full --errors-for-leak-kinds=definite)
endif()
function(run_program program)
  run(${memcheck} ${program})
  message(STATUS "${program}:\n${LAST_OUTPUT}")
  set(LAST_OUTPUT "${LAST_OUTPUT}" PARENT_SCOPE)
endfunction()

# The README shows these files verbatim (without their licence line).
file(READ ${KALDATA_SOURCE_DIR}/README.md readme)
foreach(shown main.cpp CMakeLists.txt)
  file(READ ${KALDATA_PACKAGE_SOURCE}/${shown} text)
  string(REGEX REPLACE "^# SPDX[^\n]*\n|^// SPDX[^\n]*\n" "" text "${text}")
  string(FIND "${readme}" "${text}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "README.md does not show tests/package/${shown} as it is")
  endif()
endforeach()

string(REPLACE ";" " " flags "${KALDATA_EXTRA_FLAGS}")
run(${CMAKE_COMMAND} --install ${KALDATA_BINARY_DIR} --prefix ${prefix})
file(GLOB_RECURSE pcfile ${prefix}/kaldata.pc)
get_filename_component(pcdir ${pcfile} DIRECTORY)

# 1. CMake package: find_package(kaldata COMPONENTS support recorder).
run(${CMAKE_COMMAND} -S ${KALDATA_PACKAGE_SOURCE} -B ${KALDATA_WORK_DIR}/cmake-build -G Ninja
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${KALDATA_CXX} "-DCMAKE_CXX_FLAGS=${flags}")
run(${CMAKE_COMMAND} --build ${KALDATA_WORK_DIR}/cmake-build)
run_program(${KALDATA_WORK_DIR}/cmake-build/app)
string(FIND "${LAST_OUTPUT}" "net/add net=top::rtl/clk topport=top/clk" at)
if(at EQUAL -1)
  message(FATAL_ERROR "app did not send the connection record")
endif()
run_program(${KALDATA_WORK_DIR}/cmake-build/recorded)

# 2. pkg-config, as the README writes it: the run path comes from the .pc file's libdir.
set(ENV{PKG_CONFIG_PATH} ${pcdir})
separate_arguments(extra UNIX_COMMAND "${flags}")
foreach(program app:main.cpp:kaldata-support recorded:recorded.cpp:kaldata-support,kaldata-recorder)
  string(REPLACE ":" ";" parts "${program}")
  list(GET parts 0 name)
  list(GET parts 1 source)
  list(GET parts 2 modules)
  string(REPLACE "," ";" modules "${modules}")
  run(pkg-config --cflags --libs ${modules})
  string(STRIP "${LAST_OUTPUT}" pc)
  separate_arguments(pc UNIX_COMMAND "${pc}")
  run(pkg-config --variable=libdir kaldata)
  string(STRIP "${LAST_OUTPUT}" libdir)
  run(${KALDATA_CXX} -std=c++17 ${extra} ${KALDATA_PACKAGE_SOURCE}/${source} ${pc} -Wl,-rpath,${libdir}
      -o ${KALDATA_WORK_DIR}/pc-${name})
  run_program(${KALDATA_WORK_DIR}/pc-${name})
endforeach()
