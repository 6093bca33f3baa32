# xelcsv_set_warnings(<target>): in developer builds many warnings, each an error; in a user's build nothing.
#
# Left out on purpose: -Wnull-dereference, which g++ 12 reports in the standard library's own headers when it optimises.
function(xelcsv_set_warnings target)
  if(NOT XELCSV_DEVELOPER)
    return()
  endif()
  target_compile_options(${target} PRIVATE
    -Wall
    -Wextra
    -Wpedantic
    -Werror
    -Wcast-align
    -Wcast-qual
    -Wconversion
    -Wdouble-promotion
    -Wextra-semi
    -Wformat=2
    -Wimplicit-fallthrough
    -Wnon-virtual-dtor
    -Wold-style-cast
    -Woverloaded-virtual
    -Wshadow
    -Wsign-conversion
    -Wundef
    -Wunused)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wduplicated-branches -Wduplicated-cond -Wlogical-op)
  endif()
endfunction()
