# Compiler and linker options of everything that is built here: warnings are errors, and the program
# is hardened as a Debian package is.

# The day of the build; SOURCE_DATE_EPOCH, where it is set, makes builds repeatable.
string(TIMESTAMP TQS_BUILD_DATE "%Y-%m-%d" UTC)

set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

add_library(tqs_options INTERFACE)
target_include_directories(tqs_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(tqs_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
  -fPIE -fstack-protector-strong -fstack-clash-protection -fcf-protection)
target_link_options(tqs_options INTERFACE -pie -Wl,-z,relro,-z,now,-z,pack-relative-relocs)

if(TQS_SANITIZE)
  target_compile_options(tqs_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tqs_options INTERFACE -fsanitize=address,undefined)
else()
  target_compile_definitions(tqs_options INTERFACE
    $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
endif()
