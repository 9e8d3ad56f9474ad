# ORVANE_PYTHON: Debian's Python is the one that has Debian's packages; another may come first on the path.

find_program(ORVANE_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NOT ORVANE_PYTHON)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  set(ORVANE_PYTHON ${Python3_EXECUTABLE})
endif()
