# Installs the build tree BUILD to STAGE and moves that to PREFIX: what is installed must not remember where it was put.
file(REMOVE_RECURSE ${STAGE} ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --config "${CONFIG}" --prefix ${STAGE} COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${STAGE} ${PREFIX})
