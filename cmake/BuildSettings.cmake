# What holds for every target of ours: language, warnings, assertions.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Where Debian's packages put things; --prefix still moves an installation as a whole.
if(CMAKE_INSTALL_PREFIX_INITIALIZED_TO_DEFAULT)
    set(CMAKE_INSTALL_PREFIX /usr CACHE PATH "Install prefix" FORCE)
endif()
include(GNUInstallDirs)
set(CMAKE_INSTALL_RPATH $ORIGIN $ORIGIN/../${CMAKE_INSTALL_LIBDIR})

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()
# Assertions guard the service in the field as well: no configuration switches them off.
foreach(config RELEASE RELWITHDEBINFO MINSIZEREL)
    string(REPLACE "-DNDEBUG" "" CMAKE_CXX_FLAGS_${config} "${CMAKE_CXX_FLAGS_${config}}")
endforeach()

# Files beyond 2 GB and times beyond 2038 on 32 bits. No header of the libraries that we use changes its types by them.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

option(WARNINGS_AS_ERRORS "Stop at the first warning in our own code" OFF)
set(SANITIZE "" CACHE STRING "Sanitizers for every target, as in address,undefined or thread")

add_library(own-code INTERFACE)
target_compile_options(own-code INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Wnon-virtual-dtor
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    # GCC 12 takes "text" + string for an overlapping or endless copy when it optimises (its bug 105651).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread>
    $<$<BOOL:${WARNINGS_AS_ERRORS}>:-Werror>)

if(SANITIZE)
    add_compile_options(-fsanitize=${SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${SANITIZE})
    if(CMAKE_SYSTEM_PROCESSOR STREQUAL arm)
        # UndefinedBehaviorSanitizer takes the odd address of a function in Thumb code for a misaligned one.
        add_compile_options(-marm)
    endif()
endif()

# Tells libFuzzer which ways an input takes through the targets that link this.
option(FUZZING "Build the fuzz programs (needs clang)" OFF)
add_library(fuzzed INTERFACE)
if(FUZZING)
    target_compile_options(fuzzed INTERFACE -fsanitize=fuzzer-no-link)
endif()

# A cache and a fast linker where the machine has them; nothing depends on either, and no package on what a machine has.
find_program(CCACHE ccache)
if(CCACHE)
    # It can't see into precompiled headers; their own dependencies stand in the build files.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${CCACHE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
        list(APPEND CMAKE_CXX_COMPILE_OPTIONS_CREATE_PCH -Xclang -fno-pch-timestamp)
    endif()
endif()
option(FAST_LINKER "Link with lld if it is there" ON)
find_program(LLD ld.lld)
if(FAST_LINKER AND LLD)
    add_link_options(-fuse-ld=lld)
    if(CMAKE_CROSSCOMPILING) # The cross compiler looks for it among the tools of its target.
        file(REAL_PATH ${LLD} LLD)
        cmake_path(GET LLD PARENT_PATH tools)
        add_link_options(-B${tools})
    endif()
endif()

find_package(Threads REQUIRED)
