# velmarind_python: an interpreter that has NumPy, pybind11 and its own headers; with it velmarind_python_suffix,
# that of its extensions, and velmarind_python_headers. Empty where there is none.

set(question "import sysconfig, numpy, pybind11, os
paths = [sysconfig.get_path('include'), pybind11.get_include()]
assert os.path.exists(os.path.join(paths[0], 'Python.h')), 'no Python.h'
assert os.path.exists(os.path.join(paths[1], 'pybind11', 'pybind11.h')), 'no pybind11.h'
print(';'.join([sysconfig.get_config_var('EXT_SUFFIX'), *paths]), end='')")

set(velmarind_python "")
if(VELMARIND_PYTHON_INTERPRETER)
  set(candidates "${VELMARIND_PYTHON_INTERPRETER}")
else()
  find_program(VELMARIND_FIRST_PYTHON python3)
  mark_as_advanced(VELMARIND_FIRST_PYTHON)
  set(candidates /usr/bin/python3 ${VELMARIND_FIRST_PYTHON})
endif()
foreach(candidate IN LISTS candidates)
  execute_process(COMMAND "${candidate}" -c "${question}" OUTPUT_VARIABLE answer ERROR_QUIET RESULT_VARIABLE failure)
  if(NOT failure AND answer)
    list(POP_FRONT answer velmarind_python_suffix)
    set(velmarind_python "${candidate}")
    set(velmarind_python_headers ${answer})
    break()
  endif()
endforeach()
