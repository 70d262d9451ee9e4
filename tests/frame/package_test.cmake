# Installs the library to a place of its own and builds and runs the caller's project there.
# Arguments: BUILD_DIR, WORK_DIR, SOURCE_DIR (of the caller's project), GENERATOR, TOOLCHAIN.
file(REMOVE_RECURSE ${WORK_DIR})

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    string(JOIN " " command ${ARGV})
    message(FATAL_ERROR "${command}\n${output}")
  endif()
endfunction()

if(TOOLCHAIN)
  set(toolchain -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
endif()
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/installed)
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G ${GENERATOR} ${toolchain}
    -DCMAKE_PREFIX_PATH=${WORK_DIR}/installed)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${CMAKE_CTEST_COMMAND} --test-dir ${WORK_DIR}/build --output-on-failure)
