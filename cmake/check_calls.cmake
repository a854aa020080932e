# Refuses to link "target" when an object of the libraries that follow makes a system call on files,
# by itself or through a stream: such calls are made in src/base/calls.cpp alone, where tests can
# make them fail. process.cpp may open and close, for standard descriptors that are missing.
function(check_calls target)
  set(objects)
  foreach(library ${ARGN})
    list(APPEND objects $<TARGET_OBJECTS:${library}>)
  endforeach()
  add_custom_command(TARGET ${target} PRE_LINK
    COMMAND ${CMAKE_COMMAND} -DNM=${CMAKE_NM} "-DOBJECTS=${objects}"
            -P ${PROJECT_SOURCE_DIR}/cmake/find_calls.cmake
    VERBATIM)
endfunction()
