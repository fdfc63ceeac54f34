# cmake -DQMLLINT=... -DQML_MODULES=... -DVIEWS=... -DMODULE=... -DWORK=... -P LintViews.cmake
# Runs qmllint over all views. It looks for a singleton only in the module of the folder that a view lies in, so the
# views are laid out beside their module's qmldir first. Any warning is a failure.
set(folder ${WORK}/Tarquel)
file(REMOVE_RECURSE ${folder})
file(GLOB views ${VIEWS}/*.qml)
file(COPY ${views} ${MODULE}/TarquelApp.qmltypes DESTINATION ${folder})
file(READ ${MODULE}/qmldir list)
string(REGEX REPLACE "prefer [^\n]*\n" "" list "${list}")
string(REPLACE " Views/" " " list "${list}")
file(COPY ${MODULE}/Playback/qmldir ${MODULE}/Playback/TarquelPlayback.qmltypes DESTINATION ${folder}/Playback)
# Where the base types of the house's own stand; the build knows them from C++.
file(WRITE ${folder}/qmldir "${list}depends QtQuick\ndepends QtQml.Models\n")

file(GLOB copies ${folder}/*.qml)
execute_process(
  COMMAND ${QMLLINT} --bare --unused-imports warning -I ${QML_MODULES} -I ${WORK} ${copies}
  WORKING_DIRECTORY ${WORK} OUTPUT_VARIABLE words ERROR_VARIABLE words RESULT_VARIABLE status)
string(REPLACE "${folder}/" "Views/" words "${words}")
list(LENGTH copies count)
if(NOT count OR NOT status EQUAL 0 OR words MATCHES "Warning|Error")
  message(FATAL_ERROR "qmllint ended with ${status}:\n${words}")
endif()
message("${count} views without a warning.")
