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
# list files (one name a line, '#' starts a comment) under the version node
# <node> and hides the rest, and beside it <output>.names with those names,
# one a line. Every exported symbol carries the node's name as its version,
# so a program built against this library asks for that version at load time.
function(zksupt_version_script output node)
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
  set(body "${node} {\n  global:\n")
  foreach(name IN LISTS names)
    string(APPEND body "    ${name};\n")
  endforeach()
  string(APPEND body "  local:\n    *;\n};\n")
  file(CONFIGURE OUTPUT ${output} CONTENT "${body}" @ONLY)
  list(JOIN names "\n" joined)
  file(CONFIGURE OUTPUT ${output}.names CONTENT "${joined}\n" @ONLY)
endfunction()

# Fails the configuration unless the ZKSUPT_VERSION_MAJOR/MINOR/PATCH macros of
# the given header name the project's version.
function(zksupt_check_version_header header)
  file(STRINGS ${header} lines REGEX "^#define ZKSUPT_VERSION_(MAJOR|MINOR|PATCH) ")
  set(found "")
  foreach(part IN ITEMS MAJOR MINOR PATCH)
    set(value "")
    foreach(line IN LISTS lines)
      if(line MATCHES "^#define ZKSUPT_VERSION_${part} +([0-9]+)$")
        set(value ${CMAKE_MATCH_1})
      endif()
    endforeach()
    list(APPEND found "${value}")
  endforeach()
  list(JOIN found "." found)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  if(NOT found STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "${header} names version '${found}', the project is ${PROJECT_VERSION}")
  endif()
endfunction()
