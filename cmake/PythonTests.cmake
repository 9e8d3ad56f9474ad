# Tests of the command, written for Python's unittest.

include(FindOrvanePython)

# orvane_python_tests(LABEL FILE...): each test method of the files becomes a test of its own.
function(orvane_python_tests label)
  foreach(file IN LISTS ARGN)
    set(path ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
    file(STRINGS ${path} lines REGEX "^(class [A-Za-z]+|    def test_[a-z0-9_]+)")
    get_filename_component(name ${file} NAME_WE)
    foreach(line IN LISTS lines)
      if(line MATCHES "^class ([A-Za-z]+)")
        set(class ${CMAKE_MATCH_1})
      elseif(line MATCHES "def (test_[a-z0-9_]+)")
        set(test ${label}/${name}/${CMAKE_MATCH_1})
        add_test(NAME ${test} COMMAND ${ORVANE_PYTHON} -B ${path} ${class}.${CMAKE_MATCH_1})
        set_tests_properties(${test} PROPERTIES LABELS ${label} TIMEOUT 300 SKIP_REGULAR_EXPRESSION "OK \\(skipped="
          ENVIRONMENT "PYTHONPATH=${PROJECT_SOURCE_DIR}/tests/support:${PROJECT_BINARY_DIR}/python;ORVANE_TOOL=$<TARGET_FILE:orvane_tool>")
      endif()
    endforeach()
  endforeach()
endfunction()
