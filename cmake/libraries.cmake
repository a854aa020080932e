# The XML parser and what it needs, linked statically: a run of the program costs what its start
# costs, and shared, the parser drags forty libraries in, a network client among them. What is kept
# out of it, and why, is told by src/library/library.h. The C library stays shared.
find_path(XERCES_INCLUDE xercesc/util/PlatformUtils.hpp REQUIRED)
find_library(XERCES_ARCHIVE libxerces-c.a REQUIRED)
find_library(ICUUC_ARCHIVE libicuuc.a REQUIRED)
find_library(ICUDATA_ARCHIVE libicudata.a REQUIRED)
find_package(Threads REQUIRED)

add_library(tqs_libraries INTERFACE)
target_include_directories(tqs_libraries SYSTEM INTERFACE ${XERCES_INCLUDE})
target_link_libraries(tqs_libraries INTERFACE
  ${XERCES_ARCHIVE} ${ICUUC_ARCHIVE} ${ICUDATA_ARCHIVE} Threads::Threads)
if(NOT TQS_SANITIZE)
  target_link_options(tqs_libraries INTERFACE -static-libstdc++ -static-libgcc)
endif()

# Of the second program alone, headers only: options and JSON.
find_path(CLI11_INCLUDE CLI/CLI.hpp REQUIRED)
find_path(JSON_INCLUDE nlohmann/json.hpp REQUIRED)
add_library(tqs_headers INTERFACE)
target_include_directories(tqs_headers SYSTEM INTERFACE ${CLI11_INCLUDE} ${JSON_INCLUDE})

# The files that define parts of the library anew; the list of its start where the archive's own calls
# what it was made from. The library's register of encodings is left out on purpose.
execute_process(COMMAND ${CMAKE_NM} -A -u ${XERCES_ARCHIVE} OUTPUT_VARIABLE calls ERROR_QUIET)
string(REGEX MATCHALL "XMLInitializer[.]o:[^\n]*XMLInitializer[0-9]+[A-Za-z]+Ev" calls "${calls}")
list(TRANSFORM calls REPLACE ".*XMLInitializer[0-9]+([A-Za-z]+)Ev" "\\1")
list(REMOVE_ITEM calls initializeEncodingValidator terminateEncodingValidator)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS src/library/late_tables.cpp)
file(STRINGS ${CMAKE_SOURCE_DIR}/src/library/late_tables.cpp list
  REGEX "^ +(initialize|terminate)[A-Za-z]+[(][)];")
list(TRANSFORM list REPLACE "^ +([A-Za-z]+).*" "\\1")
list(SORT calls)
list(SORT list)
set(TQS_KEPT_OUT src/library/no_network.cpp src/library/attribute_table.cpp)
if(NOT TQS_STOCK_LIBRARY)
  list(APPEND TQS_KEPT_OUT src/library/encodings.cpp)
endif()
if(TQS_STOCK_LIBRARY)
  message(STATUS "Xerces-C is linked as it comes.")
elseif(calls STREQUAL list)
  list(APPEND TQS_KEPT_OUT src/library/late_tables.cpp)
else()
  message(WARNING "This Xerces-C sets up at its start something else than the list in "
    "src/library/late_tables.cpp, so its own list is linked, and short runs take longer.")
endif()
