# The XML parser and what it needs, linked statically: a run of the program costs what its start
# costs, and shared, the parser drags forty libraries in, a network client among them. The file
# src/xml/no_network.cpp keeps that client out. The C library stays shared.
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
