# cmake -DXMLLINT=... -DWORK=folder -P limits.cmake
#
# The parser's limit of depth that docs/model-files.md names: one step below it is well-formed, one
# step above is not, with the message that the document tells its reader to look for. Its limits of
# size are others where it reads from disk, as here, and from memory, as the frame does: the tests of
# the XML access have those.

cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/xmllint.cmake)
file(MAKE_DIRECTORY "${WORK}")

# check(name content expected): `content` is well-formed, or, with `expected`, refused with it.
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
