# cmake -DHUB=program -DPRODUCT=folder|library|none -DARGUMENTS=list -DSTATUS=status
#       -DFORMAT=json|events|table -DLAST=end|crash -DSCHEMAS=folder -DWORK=folder
#       -DUNTIL=event [-DLEFT_OUT=library] -P real_run.cmake
#
# Runs HUB until the event UNTIL, or until it ends by itself, and validates its flight record and its
# output: with --json one object, with --events lines like those of a record, otherwise only the
# record. PRODUCT: the folder of a whole product; a plugin's library, of which a product is made; or
# "none" for an empty folder. HUB must end with STATUS, a number or a signal's name, and the record
# with the event LAST.

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

if(LEFT_OUT)
  cmake_path(GET HUB PARENT_PATH folder)
  file(GLOB libraries "${folder}/*.so")
  list(REMOVE_ITEM libraries "${LEFT_OUT}")
  file(COPY "${HUB}" ${libraries} DESTINATION "${WORK}/hub")
  set(HUB "${WORK}/hub/HUB")
endif()

set(ENV{XDG_STATE_HOME} "${WORK}/state")
set(output "${WORK}/output.${FORMAT}")
set(record "${WORK}/run.jsonl")
if(NOT FORMAT STREQUAL "table")
  list(APPEND ARGUMENTS --${FORMAT})
endif()
execute_process(
  COMMAND "${CMAKE_CURRENT_LIST_DIR}/../../tools/run-until" "${record}" "\"event\":\"${UNTIL}\""
          "${HUB}" run --bin "${product}/bin" --record "${record}" ${ARGUMENTS}
  TIMEOUT 90 RESULT_VARIABLE status OUTPUT_FILE "${output}" ERROR_VARIABLE errors)
if(NOT status STREQUAL STATUS)
  message(SEND_ERROR "HUB ended with ${status}, not ${STATUS}:\n${errors}")
endif()

# validate(file, arguments of validate_json.py...)
function(validate file)
  execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/validate_json.py" ${ARGN} "${file}"
    RESULT_VARIABLE result ERROR_VARIABLE faults)
  if(NOT result EQUAL 0)
    message(SEND_ERROR "What HUB wrote is not valid:\n${faults}")
  endif()
endfunction()

validate("${record}" --lines "${SCHEMAS}/record.schema.json")
file(READ "${record}" lines)
if(NOT lines MATCHES "\n[^\n]*\"event\":\"${LAST}\"[^\n]*\n$")
  message(SEND_ERROR "The record's last line is no ${LAST}:\n${lines}")
endif()
if(FORMAT STREQUAL "json")
  validate("${output}" "${SCHEMAS}/run.schema.json")
elseif(FORMAT STREQUAL "events")
  validate("${output}" --lines "${SCHEMAS}/record.schema.json")
endif()
