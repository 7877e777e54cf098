# Builds and runs a tiny host program against Orlo, the way a user's project would.
#   KIND=find-package      installs the build tree into a prefix, then find_package(orlo)
#   KIND=add-subdirectory  adds the source tree with add_subdirectory(orlo)

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "command failed (${result}): ${ARGV}\n${out}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(consumer_dir ${ORLO_SOURCE_DIR}/tests/package/${KIND})
set(configure_args -S ${consumer_dir} -B ${WORK_DIR}/build -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_BUILD_TYPE=Release)

if(KIND STREQUAL "find-package")
  run(${CMAKE_COMMAND} --install ${ORLO_BUILD_DIR} --prefix ${WORK_DIR}/prefix)
  list(APPEND configure_args -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix)
else()
  list(APPEND configure_args -DORLO_SOURCE_DIR=${ORLO_SOURCE_DIR})
endif()

run(${CMAKE_COMMAND} ${configure_args})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/host)
