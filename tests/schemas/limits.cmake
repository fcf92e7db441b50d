# cmake -DXMLLINT=... -DWORK=folder -P limits.cmake
#
# Checks the parser's limit of depth that docs/model-files.md names: at the limit a file is
# well-formed, one level deeper it is not, with the message that the document quotes. The parser's
# limits of size differ between reading from disk, as here, and from memory, as in the frame; they
# are tested with the frame's XML access.

cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/xmllint.cmake)
file(MAKE_DIRECTORY "${WORK}")

# check(name content expected): `content` must be well-formed or, if `expected` is not empty, be
# refused with that message.
function(check name content expected)
  set(file "${WORK}/${name}.xml")
  file(WRITE "${file}" "${content}")
  run_xmllint("${file}" status message)
  file(REMOVE "${file}")
  if(expected STREQUAL "")
    if(NOT status EQUAL 0)
      message(SEND_ERROR "${name}: xmllint gave ${status}, not 0:\n${message}")
    endif()
    return()
  endif()
  string(FIND "${message}" "${expected}" found)
  if(NOT status EQUAL 1 OR found EQUAL -1)
    message(SEND_ERROR "${name}: xmllint gave ${status}, not 1 and \"${expected}\":\n${message}")
  endif()
endfunction()

foreach(depth 257 258)
  string(REPEAT "<a>" ${depth} opened)
  string(REPEAT "</a>" ${depth} closed)
  set(expected "")
  if(depth EQUAL 258)
    set(expected "Excessive depth in document: 256 use XML_PARSE_HUGE option")
  endif()
  check(depth_${depth} "${opened}${closed}" "${expected}")
endforeach()
