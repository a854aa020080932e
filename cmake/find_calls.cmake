# Fails when one of OBJECTS refers to a call on files, or to the streams that make such calls. See
# check_calls.cmake.
set(calls "open|openat|creat|fopen|fopen64|freopen|fdopen|mkstemp|mkostemp|close|fclose|read|pread|fread|write|pwrite|fwrite|fsync|fdatasync|sync_file_range|ftruncate|truncate|fallocate|posix_fallocate|flock|lockf|fcntl|chown|fchown|lchown|fchownat|chmod|fchmod|fchmodat|stat|fstat|lstat|fstatat|readlink|readlinkat|rename|renameat|renameat2|unlink|unlinkat|remove|link|linkat|symlink|symlinkat|mkdir|mkdirat|printf|fprintf|vfprintf|puts|fputs|putchar|fputc|perror")
set(streams "[^\n]*(basic_filebuf|basic_[io]?fstream|10filesystem|St4cout|St4cerr)[^\n]*")
# Standard descriptors that are missing, and the standard input of a child, are no product files.
set(allowed_process "open|fcntl|close")
foreach(object ${OBJECTS})
  execute_process(COMMAND ${NM} -u ${object} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "U (__)?(${calls})(64)?(_time64)?(_2|_chk)?(@[^\n]*)?\n|U ${streams}\n" found
         "${symbols}")
  if(object MATCHES "/base/process\\.cpp\\.o$")
    list(FILTER found EXCLUDE REGEX "U (__)?(${allowed_process})(64)?(_time64)?(_2)?(@[^\n]*)?\n")
  endif()
  if(found)
    message(FATAL_ERROR "${object} makes calls on files that belong into src/base/calls.cpp: ${found}")
  endif()
endforeach()
