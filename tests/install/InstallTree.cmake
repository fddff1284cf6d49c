# Installs the build into a fresh prefix, moves the tree once more, and runs a session there
# that loads the plug-in, draws a rectangle and saves the mask: the installed copy must run
# on its own, with nothing of the build folder behind it.
set(prefix ${BUILD_DIR}/install-test)
file(REMOVE_RECURSE ${prefix} ${prefix}-moved)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix} OUTPUT_QUIET
                RESULT_VARIABLE installed)
if(NOT installed EQUAL 0)
  message(FATAL_ERROR "cmake --install failed: ${installed}")
endif()
file(RENAME ${prefix} ${prefix}-moved)
set(app ${prefix}-moved/Quillmark.app)
file(WRITE ${prefix}-moved/session.txt "run\nwait 1.1\ndown 100 100\ndrag 300 200\nup 300 200\nsave-mask mask.png\n")
execute_process(COMMAND ${app}/Contents/bin/quillmark-host session ${prefix}-moved/session.txt
                        --out ${prefix}-moved
                RESULT_VARIABLE ran ERROR_VARIABLE errors)
if(NOT ran EQUAL 0 OR NOT EXISTS ${prefix}-moved/mask.png)
  message(FATAL_ERROR "the installed host did not run the session (${ran}): ${errors}")
endif()
file(REMOVE_RECURSE ${prefix}-moved)
