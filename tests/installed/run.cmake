# Configures the project as a user does, without a preset, installs it, builds the program of this
# folder against what was installed, and runs that and the installed tool.
#
# SOURCE the project, WORK a folder of this test's own, COMPILER the C++ compiler, TOOL whether the
# tool is built.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    string(JOIN " " command ${ARGN})
    message(FATAL_ERROR "failed: ${command}\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK}/prefix ${WORK}/program)
set(settings -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=${COMPILER})
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build ${settings} -DZVWT_BUILD_TOOL=${TOOL})
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${CMAKE_COMMAND} --install ${WORK}/build --prefix ${WORK}/prefix)
run(${CMAKE_COMMAND} -S ${SOURCE}/tests/installed -B ${WORK}/program ${settings}
    -DCMAKE_PREFIX_PATH=${WORK}/prefix -DEXAMPLE=${SOURCE}/examples/first_table.cpp)
run(${CMAKE_COMMAND} --build ${WORK}/program)
run(${CMAKE_COMMAND} -DPROGRAM=${WORK}/program/program
    -DEXPECTED=${SOURCE}/examples/first_table.expected -P ${SOURCE}/cmake/CompareOutput.cmake)
if(TOOL)
  run(${WORK}/prefix/bin/zvwt --help)
endif()
