# What is installed serves a project that knows nothing of this tree, by CMake package and by pkg-config.
# Not under a sanitizer: its runtime would have to be in the consumer, too.
if(TRAVIK_INSTALL AND NOT TRAVIK_SANITIZE)
  set(consumer_source ${CMAKE_CURRENT_LIST_DIR})
  set(consumer_build ${PROJECT_BINARY_DIR}/consumer)
  set(consumer_prefix ${consumer_build}/moved)

  add_test(NAME consumer.install COMMAND ${CMAKE_COMMAND} -D BUILD=${PROJECT_BINARY_DIR} -D CONFIG=$<CONFIG>
    -D STAGE=${consumer_build}/installed -D PREFIX=${consumer_prefix} -P ${consumer_source}/InstallAndMove.cmake)
  set_tests_properties(consumer.install PROPERTIES FIXTURES_SETUP installed)

  add_test(NAME consumer.cmake-package COMMAND ${CMAKE_CTEST_COMMAND}
    --build-and-test ${consumer_source} ${consumer_build}/cmake-package --build-generator ${CMAKE_GENERATOR}
    --build-options -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER} -DCMAKE_PREFIX_PATH=${consumer_prefix}
      -DTRAVIK_WANTED_VERSION=${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    --test-command consumer)
  set_tests_properties(consumer.cmake-package PROPERTIES FIXTURES_REQUIRED installed)

  if(travik_python_wanted)
    add_test(NAME consumer.python COMMAND Python::Interpreter -c "import sys, travik
image = travik.open(sys.argv[1])
assert travik.__file__.startswith(sys.argv[2]) and image['RFBO_RFLEVEL_MAX_DATA']['values'].shape == (2, 128)"
      ${PROJECT_SOURCE_DIR}/samples/rf-board.bin ${consumer_prefix})
    set_tests_properties(consumer.python PROPERTIES FIXTURES_REQUIRED installed ENVIRONMENT
      "PYTHONPATH=${consumer_prefix}/${TRAVIK_PYTHON_DIR}")
  endif()

  find_program(PKG_CONFIG pkg-config)
  if(PKG_CONFIG)
    # xargs, because pkg-config escapes the blanks of a path for a shell that reads its output again.
    add_test(NAME consumer.pkg-config WORKING_DIRECTORY ${consumer_build} COMMAND sh -ec [=[
      "$PKG_CONFIG" --cflags --libs travik-datablock >flags
      xargs "$CXX" -std=c++20 "$SOURCE" -o pkg-config-consumer <flags
      ./pkg-config-consumer]=])
    set_tests_properties(consumer.pkg-config PROPERTIES FIXTURES_REQUIRED installed ENVIRONMENT
      "PKG_CONFIG=${PKG_CONFIG};CXX=${CMAKE_CXX_COMPILER};SOURCE=${consumer_source}/main.cpp;PKG_CONFIG_PATH=${consumer_prefix}/${CMAKE_INSTALL_LIBDIR}/pkgconfig;LD_LIBRARY_PATH=${consumer_prefix}/${CMAKE_INSTALL_LIBDIR}")
  else()
    message(STATUS "No pkg-config here: the test consumer.pkg-config is left out")
  endif()
endif()
