# cmake -DCMARK=PROGRAM -DFROM=MD -DTO=HTML -DLANGUAGE=en -P manual_page.cmake
# A page for a browser out of a chapter of the manual.
execute_process(COMMAND "${CMARK}" --unsafe --extension table "${FROM}"
  OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ".md\"" ".html\"" body "${body}")
# Headings with the anchors that the table of contents names.
string(REGEX MATCHALL "<h[23]>[^<]*</h[23]>" headings "${body}")
foreach(heading IN LISTS headings)
  string(REGEX REPLACE "<h([23])>([^<]*)</h[23]>" "\\1;\\2" parts "${heading}")
  list(GET parts 0 level)
  list(GET parts 1 words)
  string(TOLOWER "${words}" anchor)
  string(REGEX REPLACE "[.,:]" "" anchor "${anchor}")
  string(REPLACE " " "-" anchor "${anchor}")
  string(REPLACE "${heading}" "<h${level} id=\"${anchor}\">${words}</h${level}>" body "${body}")
endforeach()
file(WRITE "${TO}" "<!DOCTYPE html>
<html lang=\"${LANGUAGE}\">
<head>
<meta charset=\"utf-8\">
<title>Velmo</title>
<style>
body { font-family: sans-serif; line-height: 1.5; max-width: 50em; margin: 2em auto; padding: 0 1em; }
table { border-collapse: collapse; }
td, th { border: 1px solid #bbb; padding: .3em .6em; text-align: left; vertical-align: top; }
img { max-width: 100%; border: 1px solid #ccc; }
</style>
</head>
<body>
${body}</body>
</html>
")
