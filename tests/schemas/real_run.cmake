# cmake -DHUB=program -DPRODUCT=folder|library|none -DARGUMENTS=list -DSTATUS=how -DFORMAT=json|events
#       -DSCHEMAS=folder -DWORK=folder -P real_run.cmake
#
# Runs HUB and validates what it prints: with --json one object, with --events lines like those of a
# flight record. PRODUCT: the folder of a whole product, a plugin's library that a product is made
# of, or "none" for a folder in which there is nothing to read. HUB has to end with STATUS,
# a number or the name of a signal.

cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/bin")
set(product "${WORK}")
if(IS_DIRECTORY "${PRODUCT}")
  set(product "${PRODUCT}")
elseif(NOT PRODUCT STREQUAL "none")
  file(WRITE "${WORK}/Product.xml"
    "<ProductDescription><Plugins><Plugin ID='a.server'/></Plugins></ProductDescription>")
  file(WRITE "${WORK}/bin/META_INFO/DeviceDrivers.xml" "<DAMDrivers/>")
  file(WRITE "${WORK}/bin/META_INFO/Portal.xml" "<PortalDescription/>")
  file(WRITE "${WORK}/bin/META_INFO/Platform.xml" "<Platform/>")
  file(WRITE "${WORK}/bin/META_INFO/a.server/a.server.xml"
    "<Plugin><Type>2</Type><ID>a.server</ID></Plugin>")
  file(COPY_FILE "${PRODUCT}" "${WORK}/bin/a.server.dll")
endif()

set(ENV{XDG_STATE_HOME} "${WORK}/state")
set(output "${WORK}/output.${FORMAT}")
execute_process(COMMAND "${HUB}" run --bin "${product}/bin" --${FORMAT} ${ARGUMENTS}
  RESULT_VARIABLE status OUTPUT_FILE "${output}" ERROR_VARIABLE errors)
if(NOT status STREQUAL STATUS)
  message(SEND_ERROR "HUB ended with ${status}, not ${STATUS}:\n${errors}")
endif()

set(schema --lines "${SCHEMAS}/record.schema.json")
if(FORMAT STREQUAL "json")
  set(schema "${SCHEMAS}/run.schema.json")
endif()
execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/validate_json.py" ${schema} "${output}"
  RESULT_VARIABLE result ERROR_VARIABLE faults)
if(NOT result EQUAL 0)
  message(SEND_ERROR "What HUB printed is not valid:\n${faults}")
endif()
