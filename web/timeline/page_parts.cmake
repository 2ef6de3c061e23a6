# Writes FOLDER/page_parts.cpp from FOLDER/page.js, FOLDER/page.css and PAGE; without PAGE, one that
# has none of them. For `cmake -P`.

set(texts "")
set(parts "")
function(add_part file hashed)
  file(READ ${file} text)
  string(STRIP "${text}" text)
  file(WRITE ${FOLDER}/part.txt "${text}")
  # A literal has at most 64 KiB in every compiler; the delimiter is in no bundle.
  file(SIZE ${FOLDER}/part.txt length)
  set(literals "")
  set(begin 0)
  while(begin LESS length)
    string(SUBSTRING "${text}" ${begin} 16000 piece)
    string(APPEND literals "R\"~~~(${piece})~~~\"\n")
    math(EXPR begin "${begin} + 16000")
  endwhile()
  string(APPEND parts "    ${literals},\n")
  if(hashed)
    file(SHA256 ${FOLDER}/part.txt hash)
    string(APPEND parts "    \"${hash}\",\n")
  endif()
  set(parts "${parts}" PARENT_SCOPE)
endfunction()

if(PAGE)
  add_part(${PAGE} FALSE)
  add_part(${FOLDER}/page.js TRUE)
  add_part(${FOLDER}/page.css TRUE)
endif()
file(WRITE ${FOLDER}/page_parts.cpp
     "// Made from web/timeline/.

#include \"scope/timeline/page_parts.h\"

namespace sonaprobe::scope::timeline {

const PageParts kPageParts = {
${parts}};

}  // namespace sonaprobe::scope::timeline
")
