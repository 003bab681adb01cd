# Writes the page as a source file: its frame, one style, one script, and the licences of what is within.
#
#   cmake -D FOLDER=command/report/page -D LIBRARIES=node_modules -D OUTPUT=page.cpp -P embed.cmake
#
# Without LIBRARIES the page has no charts. The scripts of the page are modules; here each becomes a function that returns what it
# exports, in the order in which they need each other, for a module of its own would have to be fetched.
set(modules dom data units days chart colours files address lines header sankey months stores series_data series_chart series
    network_graph network_boxes network_pictures network_drawing network_view network_details network
    balance compare sweep_groups sweep start)
set(styles page print)
# Name, file of its script, file of its licence.
set(packages
    "uPlot|uplot/dist/uPlot.iife.min.js|uplot/LICENSE"
    "d3-array|d3-array/dist/d3-array.min.js|d3-array/LICENSE"
    "d3-sankey|d3-sankey/dist/d3-sankey.min.js|d3-sankey/LICENSE"
    "dagre|@dagrejs/dagre/dist/dagre.min.js|@dagrejs/dagre/LICENSE"
    "graphlib, within dagre||@dagrejs/graphlib/LICENSE")

set(script "")
set(style "")
set(licences "")
if(LIBRARIES)
    foreach(package IN LISTS packages)
        string(REGEX MATCH "^(.*)[|](.*)[|](.*)$" matched "${package}")
        set(name "${CMAKE_MATCH_1}")
        set(file "${CMAKE_MATCH_2}")
        file(READ "${LIBRARIES}/${CMAKE_MATCH_3}" licence)
        string(APPEND licences "${name}\n\n${licence}\n\n")
        if(file STREQUAL "")
            continue()
        endif()
        file(READ "${LIBRARIES}/${file}" text)
        string(REGEX REPLACE "\n//# sourceMappingURL=[^\n]*" "" text "${text}")
        if(name STREQUAL "uPlot")
            # Charts have two points for each of the screen at least, so that they are sharp on paper.
            set(text "var uPlot = (() => { const devicePixelRatio = Math.max(2, window.devicePixelRatio);\n${text}\nreturn uPlot; })();")
        endif()
        string(APPEND script "${text}\n")
    endforeach()
    file(READ "${LIBRARIES}/uplot/dist/uPlot.min.css" style)
endif()
string(APPEND script "(() => {\n\"use strict\";\n")
foreach(module IN LISTS modules)
    file(READ "${FOLDER}/${module}.js" text)
    string(REGEX REPLACE "(^|\n)import ({[^}]*}) from \"./([a-z_]+).js\";" "\\1const \\2 = module_\\3;" text "${text}")
    string(REGEX MATCHALL "\nexport [a-z]+ [A-Za-z]+" exports "\n${text}")
    list(TRANSFORM exports REPLACE "\nexport [a-z]+ " "")
    list(JOIN exports ", " exports)
    string(REGEX REPLACE "(^|\n)export " "\\1" text "${text}")
    string(APPEND script "const module_${module} = (() => {\n${text}return { ${exports} };\n})();\n")
endforeach()
string(APPEND script "})();\n")
foreach(one IN LISTS styles)
    file(READ "${FOLDER}/${one}.css" text)
    string(APPEND style "${text}")
endforeach()
file(READ "${FOLDER}/page.html" html)

set(source "#include \"report_page.h\"\n\nnamespace kesto::page {\n\n")
foreach(part IN ITEMS kHtml:html kStyle:style kScript:script kLicences:licences)
    string(REGEX MATCH "^(.*):(.*)$" matched "${part}")
    string(APPEND source "extern const std::string_view ${CMAKE_MATCH_1} = R\"KESTO(" "${${CMAKE_MATCH_2}}" ")KESTO\";\n\n")
endforeach()
file(WRITE "${OUTPUT}" "${source}}  // namespace kesto::page\n")
