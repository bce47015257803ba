# Writes the C++ source OUTPUT that holds the page of 'datablock report': HTML, style sheets and scripts, those of the
# plotting library in the folder DYGRAPHS first, then the page's own of the folder REPORT by their numbers.
cmake_policy(VERSION 3.25)

file(READ ${REPORT}/report.html html)
file(READ ${DYGRAPHS}/dygraph.min.css library_style)
file(READ ${REPORT}/report.css style)
file(READ ${DYGRAPHS}/dygraph.min.js library)
# Maps to sources that are not there.
string(REGEX REPLACE "\n/[/*]# sourceMappingURL=[^\n]*" "" library "${library}")
string(REGEX REPLACE "\n/[/*]# sourceMappingURL=[^\n]*" "" library_style "${library_style}")

string(REPLACE "µ" "\\u00b5" library "${library}") # its one letter that is not ASCII

file(GLOB scripts ${REPORT}/*.js)
list(SORT scripts COMPARE NATURAL)
set(page "")
foreach(script IN LISTS scripts)
  file(READ ${script} text)
  string(APPEND page "${text}")
endforeach()
file(READ ${DYGRAPHS_COPYRIGHT} notice)
string(REGEX MATCH "Copyright.*OTHER DEALINGS IN[^.]*\\." permission "${notice}")
string(REGEX REPLACE "\nSome tests additionally.*\nPermission is hereby" "\nPermission is hereby" permission "${permission}")
if(NOT permission)
  message(FATAL_ERROR "No licence notice of the plotting library in ${DYGRAPHS_COPYRIGHT}")
endif()

# Literals of a length that every compiler takes.
function(literals name text)
  if("${text}" MATCHES "[^\t\n -~]")
    message(FATAL_ERROR "The ${name} of the report has more than ASCII: write it as an escape, for every compiler")
  endif()
  set(literal "")
  string(LENGTH "${text}" length)
  set(from 0)
  while(from LESS length)
    string(SUBSTRING "${text}" ${from} 8000 part)
    string(APPEND literal "R\"~page~(${part})~page~\"\n")
    math(EXPR from "${from} + 8000")
  endwhile()
  set(${name} "${literal}" PARENT_SCOPE)
endfunction()

literals(html "${html}")
literals(style "${library_style}\n${style}")
literals(script "/*\n${permission}\n*/\n${library}\n(() => {\n\"use strict\";\n${page}})();\n")
file(WRITE ${OUTPUT} "#include \"ReportAssets.h\"

namespace Tool {

const std::string_view reportHtml =
${html};
const std::string_view reportStyle =
${style};
const std::string_view reportScript =
${script};

} // namespace Tool
")
