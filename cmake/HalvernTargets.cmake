# How this project makes its libraries and programs.

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# What every target of the project is compiled with.
add_library(halvern_options INTERFACE)
target_compile_features(halvern_options INTERFACE cxx_std_17)
# Deprecated Qt and OpenGL calls are part of what the widgets do; they are no warnings here.
target_compile_options(halvern_options INTERFACE -Wall -Wextra -Wno-deprecated-declarations)
target_include_directories(halvern_options INTERFACE ${PROJECT_SOURCE_DIR})

if(HALVERN_SANITIZE STREQUAL "address")
    set(sanitize -fsanitize=address,undefined -fno-sanitize=vptr -fno-omit-frame-pointer -g1)
    set(sanitized_programs ${CMAKE_CURRENT_LIST_DIR}/KeepModules.cpp)
elseif(HALVERN_SANITIZE STREQUAL "thread")
    set(sanitize -fsanitize=thread -fno-omit-frame-pointer -g1)
endif()
if(sanitize)
    target_compile_options(halvern_options INTERFACE ${sanitize})
    target_link_options(halvern_options INTERFACE ${sanitize})
endif()

# halvern_program(<name> <sources...>)
function(halvern_program name)
    add_executable(${name} ${ARGN} ${sanitized_programs})
    target_link_libraries(${name} PRIVATE halvern_options)
    if(sanitized_programs)
        target_link_options(${name} PRIVATE -Wl,--export-dynamic-symbol=dlclose)
    endif()
endfunction()

# halvern_library(<name> <EXPORT_PREFIX> <sources...>)
# A shared library with hidden visibility; <EXPORT_PREFIX>_BUILD is defined while it is compiled. Who uses the
# installed package links halvern_foo as halvern::foo.
function(halvern_library name prefix)
    string(REPLACE halvern_ "" exported ${name})
    add_library(${name} SHARED ${ARGN})
    add_library(halvern::${exported} ALIAS ${name})
    target_compile_definitions(${name} PRIVATE ${prefix}_BUILD)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:halvern_options>)
    set_target_properties(${name} PROPERTIES
        EXPORT_NAME ${exported}
        INSTALL_RPATH "$<$<BOOL:${HALVERN_RELOCATABLE}>:$ORIGIN>"
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    install(TARGETS ${name} EXPORT halvern
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
endfunction()
