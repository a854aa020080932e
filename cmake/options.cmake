# Compiler and linker options of everything that is built here.

# The day of the build; SOURCE_DATE_EPOCH, where it is set, makes builds repeatable.
string(TIMESTAMP TQS_BUILD_DATE "%Y-%m-%d" UTC)

# What CXXFLAGS says of the optimization holds.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
if(CMAKE_CXX_FLAGS MATCHES "-O")
  set(CMAKE_CXX_FLAGS_RELEASE -DNDEBUG)
endif()

# Warnings stop those who build the tests, not those who build the program with a compiler of
# another day; either can say otherwise.
if(NOT DEFINED CMAKE_COMPILE_WARNING_AS_ERROR)
  set(CMAKE_COMPILE_WARNING_AS_ERROR ${TQS_TESTS})
endif()
option(TQS_HARDEN "Harden the program as Debian's packages are" ON)
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)

add_library(tqs_options INTERFACE)
target_include_directories(tqs_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
# The program tells nothing of the machine that it was built on.
target_compile_options(tqs_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
# Processors of 32 bits are asked for files, inodes and times of any size.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  target_compile_definitions(tqs_options INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()
# A linker for another processor, or an older one, warns of it and leaves it out.
check_linker_flag(CXX -Wl,--fatal-warnings,-z,pack-relative-relocs TQS_PACKS_RELOCATIONS)
if(TQS_PACKS_RELOCATIONS)
  target_link_options(tqs_options INTERFACE -Wl,-z,pack-relative-relocs)
endif()
# Optimized as a whole. Objects keep their symbols, which check_calls.cmake looks at.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND NOT TQS_SANITIZE)
  target_compile_options(tqs_options INTERFACE
    $<$<CONFIG:Release>:-flto=auto> $<$<CONFIG:Release>:-ffat-lto-objects>)
  target_link_options(tqs_options INTERFACE $<$<CONFIG:Release>:-flto=auto>)
endif()
if(TQS_HARDEN)
  # Each where the compiler knows it for its processor; some only warn where they do not.
  set(CMAKE_REQUIRED_FLAGS -Werror)
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection
          -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER "TQS_HAS${flag}" has)
    check_cxx_compiler_flag(${flag} ${has})
    if(${has})
      target_compile_options(tqs_options INTERFACE ${flag})
    endif()
  endforeach()
  unset(CMAKE_REQUIRED_FLAGS)
  target_compile_options(tqs_options INTERFACE -fPIE)
  target_link_options(tqs_options INTERFACE -pie -Wl,-z,relro,-z,now)
endif()

if(TQS_SANITIZE)
  target_compile_options(tqs_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tqs_options INTERFACE -fsanitize=address,undefined)
elseif(TQS_HARDEN AND NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
  target_compile_definitions(tqs_options INTERFACE
    $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
endif()
