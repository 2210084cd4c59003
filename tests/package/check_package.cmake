file(REMOVE_RECURSE ${WORK_DIR})
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build -j 1)
run(${WORK_DIR}/build/consumer)
set(outputs "${last_output}")
# The widget's consumer is there when the package has the Qt component; it draws off
# screen, and must pass before anything is reported.
if(EXISTS ${WORK_DIR}/build/qt_consumer)
  run(${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen ${WORK_DIR}/build/qt_consumer)
  string(APPEND outputs "${last_output}")
endif()
message("${outputs}")
