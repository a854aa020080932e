# Compiler and linker options of everything that is built here.

# The day of the build; SOURCE_DATE_EPOCH, where it is set, makes builds repeatable.
string(TIMESTAMP TQS_BUILD_DATE "%Y-%m-%d" UTC)

set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

# Who packages the program for other compilers can switch both off; a compiler for other processors
# may lack a part of the second.
set(CMAKE_COMPILE_WARNING_AS_ERROR ON CACHE BOOL "Take warnings for errors")
option(TQS_HARDEN "Harden the program as Debian's packages are" ON)

add_library(tqs_options INTERFACE)
target_include_directories(tqs_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
# The program tells nothing of the machine that it was built on.
target_compile_options(tqs_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
target_link_options(tqs_options INTERFACE -Wl,-z,pack-relative-relocs)
# Optimized as a whole. Objects keep their symbols, which check_calls.cmake looks at.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND NOT TQS_SANITIZE)
  target_compile_options(tqs_options INTERFACE
    $<$<CONFIG:Release>:-flto=auto> $<$<CONFIG:Release>:-ffat-lto-objects>)
  target_link_options(tqs_options INTERFACE $<$<CONFIG:Release>:-flto=auto>)
endif()
if(TQS_HARDEN)
  include(CheckCXXCompilerFlag)
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "TQS_HAS${flag}" has)
    check_cxx_compiler_flag(${flag} ${has})
    if(${has})
      target_compile_options(tqs_options INTERFACE ${flag})
    endif()
  endforeach()
  target_compile_options(tqs_options INTERFACE -fPIE)
  target_link_options(tqs_options INTERFACE -pie -Wl,-z,relro,-z,now)
endif()

if(TQS_SANITIZE)
  target_compile_options(tqs_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tqs_options INTERFACE -fsanitize=address,undefined)
elseif(TQS_HARDEN)
  target_compile_definitions(tqs_options INTERFACE
    $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
endif()
