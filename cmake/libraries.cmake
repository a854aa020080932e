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

# The files that define parts of the library anew; the list of its start for the version whose list
# was looked at.
set(known_version 3.2.4)
file(STRINGS ${XERCES_INCLUDE}/xercesc/util/XercesVersion.hpp version
  REGEX "^#define XERCES_VERSION_(MAJOR|MINOR|REVISION) +[0-9]+")
list(TRANSFORM version REPLACE ".* " "")
list(JOIN version . version)
set(TQS_KEPT_OUT src/library/no_network.cpp src/library/attribute_table.cpp)
if(NOT TQS_STOCK_LIBRARY)
  list(APPEND TQS_KEPT_OUT src/library/encodings.cpp)
endif()
if(TQS_STOCK_LIBRARY)
  message(STATUS "Xerces-C ${version} is linked as it comes.")
elseif(version VERSION_EQUAL known_version)
  list(APPEND TQS_KEPT_OUT src/library/late_tables.cpp)
else()
  message(WARNING "Xerces-C is ${version}, not ${known_version}: it sets up at its start all that it "
    "ever needs, and short runs take longer.")
endif()
