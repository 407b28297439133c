# Puts style and scripts into the page and the page into a C++ source.
#   cmake -DFOLDER=tools/report -DCHARTS=FOLDER_OF_DYGRAPHS -DOUTPUT=page.cpp -P embed.cmake

# Of browsers: the SHA-256 of the text in base64.
function(content_hash text result)
    set(digits "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
    string(SHA256 hex "${text}")
    set(hash "")
    # Three hexadecimal digits are two of base64. 64 leave one, which is two with four zero bits.
    string(APPEND hex "00")
    foreach(position RANGE 0 63 3)
        string(SUBSTRING "${hex}" ${position} 3 three)
        math(EXPR high "0x${three} >> 6")
        math(EXPR low "0x${three} & 63")
        string(SUBSTRING "${digits}" ${high} 1 high)
        string(SUBSTRING "${digits}" ${low} 1 low)
        string(APPEND hash "${high}${low}")
    endforeach()
    # 64 digits and the two zeros make 44; the last stands for no bits and is padding.
    string(SUBSTRING "${hash}" 0 43 hash)
    set(${result} "'sha256-${hash}='" PARENT_SCOPE)
endfunction()

# The text of a file, without the comment that names a map of its source: that is not there.
function(read_text file result)
    file(READ "${file}" text)
    string(REGEX REPLACE "\n//# sourceMappingURL=[^\n]*" "" text "${text}")
    string(REGEX REPLACE "\n/[*]# sourceMappingURL=[^\n]*" "" text "${text}")
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

read_text("${FOLDER}/page/page.html" page)
read_text("${CHARTS}/dygraph.min.css" charts_style)
read_text("${FOLDER}/page/page.css" page_style)
read_text("${CHARTS}/dygraph.min.js" charts_script)
# One script in one function: the files are read one behind the other, and share their names.
set(page_script "(function () {\n'use strict';\n")
foreach(part data axis charts track pointers controls)
    read_text("${FOLDER}/page/${part}.js" text)
    string(APPEND page_script "\n${text}")
endforeach()
string(APPEND page_script "})();\n")

set(style "${charts_style}\n${page_style}")
content_hash("${style}" style_hash)
content_hash("${charts_script}" charts_hash)
content_hash("${page_script}" page_hash)
string(REPLACE "{{style hash}}" "${style_hash}" page "${page}")
string(REPLACE "{{script hashes}}" "${charts_hash} ${page_hash}" page "${page}")
string(REPLACE "{{style}}" "${style}" page "${page}")
string(REPLACE "{{charts script}}" "${charts_script}" page "${page}")
string(REPLACE "{{page script}}" "${page_script}" page "${page}")

file(WRITE "${OUTPUT}.html" "${page}")
file(READ "${OUTPUT}.html" bytes HEX)
string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
file(WRITE "${OUTPUT}" "#include \"tools/report/pageTemplate.h\"

namespace vextrace::tools {

namespace {
constexpr char TEXT[] = {
${bytes}};
}  // namespace

std::string_view pageTemplate() {
    return {TEXT, sizeof(TEXT)};
}

}  // namespace vextrace::tools
")
