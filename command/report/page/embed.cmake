# Writes the parts of the page as a source file. Without a folder of uPlot its parts are empty.
#
#   cmake -D FOLDER=command/report/page -D UPLOT=node_modules/uplot -D OUTPUT=page.cpp -P embed.cmake
set(source "#include \"report_page.h\"\n\nnamespace kesto::page {\n\n")
foreach(part IN ITEMS kHtml:${FOLDER}/page.html kCss:${FOLDER}/page.css kScript:${FOLDER}/page.js
        kUplotScript:${UPLOT}/dist/uPlot.iife.min.js kUplotCss:${UPLOT}/dist/uPlot.min.css kUplotLicence:${UPLOT}/LICENSE)
    string(REGEX MATCH "^([^:]*):(.*)$" matched "${part}")
    set(name ${CMAKE_MATCH_1})
    set(path ${CMAKE_MATCH_2})
    set(text "")
    if(UPLOT OR NOT name MATCHES "^kUplot")
        file(READ "${path}" text)
    endif()
    string(APPEND source "extern const std::string_view ${name} = R\"KESTO(" "${text}" ")KESTO\";\n\n")
endforeach()
file(WRITE "${OUTPUT}" "${source}}  // namespace kesto::page\n")
