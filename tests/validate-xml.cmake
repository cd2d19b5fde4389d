# Exports a table as XML and has the document validated by xmllint against the schema that it names,
# from Debian's package of the framework; where there is no such package the document has to be well
# formed.
#
# TOOL the tool, EMULATOR what runs it if it is for another machine, WORK a folder of this test's own.

function(run output)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE errors
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT result EQUAL 0)
    string(JOIN " " command ${ARGN})
    message(FATAL_ERROR "failed: ${command}\n${text}${errors}")
  endif()
  set(${output} "${text}" PARENT_SCOPE)
endfunction()

find_program(XMLLINT xmllint REQUIRED)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/tables)
file(WRITE ${WORK}/table.csv "n,text,d\n1,\"<&>'\"\"\",2024-02-29\n,Größe €,\n")
run(table ${EMULATOR} ${TOOL} import --dir ${WORK}/tables ${WORK}/table.csv)
run(document ${EMULATOR} ${TOOL} export --dir ${WORK}/tables --format xml ${table})
file(WRITE ${WORK}/table.xml "${document}")

set(schema org/springframework/beans/factory/xml/spring-beans-3.0.xsd)
find_file(jar spring3-beans.jar PATHS /usr/share/java)
set(validation "")
if(NOT jar)
  message(WARNING "without spring3-beans.jar the document is not validated, only parsed")
else()
  execute_process(COMMAND ${CMAKE_COMMAND} -E tar xf ${jar} ${schema} WORKING_DIRECTORY ${WORK})
  set(validation --schema ${WORK}/${schema})
endif()
run(ignored ${XMLLINT} --noout --nonet ${validation} ${WORK}/table.xml)
