# layer(NAME [SHARED] HEADERS folder SOURCES file... [USES target...] [PRIVATELY target...])
#
# A layer is a folder with its public headers and a target. It sees the headers of the layers in
# USES and of nothing else, so that an include that runs upwards doesn't compile. PRIVATELY names what
# only its sources see, foreign libraries above all.
function(layer name)
    cmake_parse_arguments(arg "SHARED" "HEADERS" "SOURCES;USES;PRIVATELY" ${ARGN})
    if(arg_SHARED)
        set(kind SHARED)
    else()
        set(kind STATIC)
    endif()
    add_library(${name} ${kind} ${arg_SOURCES})
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${arg_HEADERS}>)
    target_link_libraries(${name} PUBLIC ${arg_USES} PRIVATE own-code fuzzed ${arg_PRIVATELY})
    # Each public header compiles by itself.
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${arg_HEADERS}/*.h)
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${arg_HEADERS} FILES ${headers})
    if(NOT SANITIZE)
        set_target_properties(${name} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
    endif()
endfunction()
