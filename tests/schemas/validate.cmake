# cmake -DXMLLINT=... -DSCHEMAS=folder -DFILE=file.xml -DMODE=good|bad|site -P validate.cmake
#
# Validates one model file with xmllint.
#   good  <Schema>_<what>.xml must be valid.
#   bad   <Schema>_<why>.xml must be refused, with the message that its first line expects:
#         <!-- expect: part of the message -->. A file refused for another reason fails the test.
#   site  a file of a product tree must be valid; its path says which schema applies.

cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/xmllint.cmake)

# schema_of_site_file(out file): the schema for `file`, by its path in a product tree.
function(schema_of_site_file out file)
  cmake_path(GET file STEM LAST_ONLY name)
  cmake_path(GET file PARENT_PATH folder)
  cmake_path(GET folder FILENAME parent)
  cmake_path(GET folder PARENT_PATH above)
  cmake_path(GET above FILENAME grandparent)
  set(schema "")
  if(name MATCHES "^(Product|ProductAddons|ProductTools)$" AND NOT parent MATCHES "^(META_INFO|TevAddons)$")
    set(schema ${name})
  elseif(parent STREQUAL "META_INFO" AND name MATCHES "^(DeviceDrivers|Portal|Platform)$")
    set(schema ${name})
  elseif(parent STREQUAL "TevAddons" AND name STREQUAL "InstalledProducts")
    set(schema ${name})
  elseif(parent STREQUAL name AND grandparent STREQUAL "META_INFO")
    set(schema Plugin)
  elseif(parent STREQUAL name AND grandparent STREQUAL "TevAddons")
    # Addons and tools are in the same folder; only the root element differs.
    file(READ "${file}" content)
    if(content MATCHES "<(AddonDescription|ToolDescription)[ \t\r\n/>]")
      set(schema ${CMAKE_MATCH_1})
    endif()
  endif()
  if(schema STREQUAL "")
    message(FATAL_ERROR "${file}: no model file has this place; the frame never reads it.")
  endif()
  set(${out} ${schema} PARENT_SCOPE)
endfunction()

if(MODE STREQUAL "site")
  schema_of_site_file(schema "${FILE}")
else()
  cmake_path(GET FILE FILENAME name)
  string(REGEX REPLACE "_.*" "" schema "${name}")
endif()
run_xmllint("${FILE}" status message --schema "${SCHEMAS}/${schema}.xsd")

if(NOT MODE STREQUAL "bad")
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "xmllint gave ${status}, not 0, against ${schema}.xsd:\n${message}")
  endif()
  return()
endif()

file(READ "${FILE}" content)
if(NOT content MATCHES "^<!-- expect: ([^\n]+) -->\n")
  message(FATAL_ERROR "${FILE}: the first line must be <!-- expect: part of the message -->")
endif()
set(expected "${CMAKE_MATCH_1}")
if(NOT status EQUAL 3 AND NOT status EQUAL 4)
  message(FATAL_ERROR "xmllint gave ${status}, not 3 or 4 for an invalid file:\n${message}")
endif()
string(FIND "${message}" "${expected}" found)
if(found EQUAL -1)
  message(FATAL_ERROR "Refused for another reason. Expected:\n${expected}\nbut got:\n${message}")
endif()
