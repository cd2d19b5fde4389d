# Configures the project as a user does, without a preset, installs it, builds the project of this
# folder, the examples, against what was installed, and runs them and the installed tool. For
# another machine what is built already is installed.
#
# SOURCE the project, WORK a folder of this test's own, COMPILER the C++ compiler, TOOL the name of
# the tool's file, empty where it is not built; for another machine TOOLCHAIN the file that describes
# it, EMULATOR what runs its programs, BUILT where the project was built; PYTHON an interpreter that
# loads the library, where there is one.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    string(JOIN " " command ${ARGN})
    message(FATAL_ERROR "failed: ${command}\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK}/prefix ${WORK}/examples)
set(settings -G Ninja -DCMAKE_BUILD_TYPE=Release)
if(TOOLCHAIN)
  # A file takes a list of words as it is. What is installed is found although it is not among the
  # other machine's files.
  file(WRITE ${WORK}/settings.cmake "\
set(CMAKE_TOOLCHAIN_FILE \"${TOOLCHAIN}\" CACHE FILEPATH \"\")
set(CMAKE_CROSSCOMPILING_EMULATOR \"${EMULATOR}\" CACHE STRING \"\")
set(CMAKE_INSTALL_PREFIX \"${WORK}/prefix\" CACHE PATH \"\")
set(CMAKE_STAGING_PREFIX \"${WORK}/prefix\" CACHE PATH \"\")
")
  list(APPEND settings -C ${WORK}/settings.cmake)
else()
  list(APPEND settings -DCMAKE_CXX_COMPILER=${COMPILER})
  set(withTool OFF)
  if(TOOL)
    set(withTool ON)
  endif()
  set(BUILT ${WORK}/build)
  run(${CMAKE_COMMAND} -S ${SOURCE} -B ${BUILT} ${settings} -DZVWT_BUILD_TOOL=${withTool})
  run(${CMAKE_COMMAND} --build ${BUILT})
endif()
run(${CMAKE_COMMAND} --install ${BUILT} --prefix ${WORK}/prefix)
run(${CMAKE_COMMAND} -S ${SOURCE}/tests/installed -B ${WORK}/examples ${settings}
    -DCMAKE_PREFIX_PATH=${WORK}/prefix -DEXAMPLES=${SOURCE}/examples
    -DCOMPARE=${SOURCE}/cmake/CompareOutput.cmake)
run(${CMAKE_COMMAND} --build ${WORK}/examples)
run(${CMAKE_CTEST_COMMAND} --test-dir ${WORK}/examples --output-on-failure --no-tests=error)
if(TOOL)
  run(${EMULATOR} ${WORK}/prefix/bin/${TOOL} --help)
endif()
if(PYTHON)
  run(${CMAKE_COMMAND} -E env PYTHONPATH=${WORK}/prefix/share/zvwt/python
      LD_LIBRARY_PATH=${WORK}/prefix/lib
      ${PYTHON} -B -c "import zvwt\nwith zvwt.Manager() as manager: print(manager)")
endif()
