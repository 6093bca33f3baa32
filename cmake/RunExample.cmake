# Runs a program and compares what it prints with a file:
#
#   cmake -D program=P -D arguments=A;B -D expected=FILE -D actual=FILE -D diff=PATH -P RunExample.cmake
#
# Without the file the program must print something. In any case it must end well.
execute_process(COMMAND ${program} ${arguments} OUTPUT_FILE ${actual} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  file(READ ${actual} output)
  message(FATAL_ERROR "${program} ${arguments} ended with ${result}. It printed:\n${output}")
endif()
if(EXISTS ${expected})
  execute_process(COMMAND ${diff} -u ${expected} ${actual} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${program} ${arguments} prints something else than ${expected}")
  endif()
else()
  file(SIZE ${actual} size)
  if(size EQUAL 0)
    message(FATAL_ERROR "${program} ${arguments} prints nothing")
  endif()
endif()
