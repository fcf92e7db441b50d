# run_xmllint(file status message options...): runs xmllint on `file`. `status` becomes its exit
# status (0 valid, 1 not well-formed, 3 or 4 invalid, 5 no usable schema), `message` its output.
function(run_xmllint file status message)
  execute_process(
    COMMAND "${XMLLINT}" --nonet --noout ${ARGN} "${file}"
    RESULT_VARIABLE result OUTPUT_VARIABLE said ERROR_VARIABLE said ENCODING UTF8)
  set(${status} "${result}" PARENT_SCOPE)
  set(${message} "${said}" PARENT_SCOPE)
endfunction()
