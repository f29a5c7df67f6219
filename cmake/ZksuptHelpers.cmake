# Warnings for the project's own code: on, and errors when ZKSUPT_WERROR is
# (scripts/test.sh turns it on; a user's build with another compiler does not
# fail on a warning that compiler adds).
function(zksupt_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual
    $<$<BOOL:${ZKSUPT_WERROR}>:-Werror>
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>)
endfunction()

# Writes a linker version script that exports exactly the names in the given
# list files (one name a line, '#' starts a comment) and hides the rest,
# and beside it <output>.names with those names, one a line.
# The node is anonymous, so the exported symbols carry no version tag.
function(zksupt_version_script output)
  set(names "")
  foreach(list_file IN LISTS ARGN)
    file(STRINGS ${list_file} lines)
    foreach(line IN LISTS lines)
      string(REGEX REPLACE "#.*$" "" line "${line}")
      string(STRIP "${line}" line)
      if(line)
        list(APPEND names ${line})
      endif()
    endforeach()
  endforeach()
  list(SORT names)
  list(REMOVE_DUPLICATES names)
  set(body "{\n  global:\n")
  foreach(name IN LISTS names)
    string(APPEND body "    ${name};\n")
  endforeach()
  string(APPEND body "  local:\n    *;\n};\n")
  file(CONFIGURE OUTPUT ${output} CONTENT "${body}" @ONLY)
  list(JOIN names "\n" joined)
  file(CONFIGURE OUTPUT ${output}.names CONTENT "${joined}\n" @ONLY)
endfunction()
