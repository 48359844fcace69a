# How every target of this tree is compiled: one interface target, `oru_flags`.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

# Libraries find each other, and tests find them, wherever the folder is moved to.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

add_library(oru_flags INTERFACE)
target_compile_definitions(oru_flags INTERFACE _GNU_SOURCE)
target_compile_options(oru_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<COMPILE_LANGUAGE:CXX>:-Wno-missing-field-initializers>
  -fvisibility=hidden
  $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden>)
if(ORUAPI_WERROR)
  target_compile_options(oru_flags INTERFACE -Werror)
endif()

# Weak operations are replaced at load time, so no compiler may bind a call to them early.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(oru_flags INTERFACE -fsemantic-interposition)
endif()

# All symbols are bound at load time, so calls between libraries need no stubs on their way.
target_compile_options(oru_flags INTERFACE $<$<CONFIG:Release>:-fno-plt>)

target_compile_options(oru_flags INTERFACE
  $<$<CONFIG:Release>:-fstack-protector-strong>
  $<$<CONFIG:Release>:-fstack-clash-protection>)
target_compile_definitions(oru_flags INTERFACE $<$<CONFIG:Release>:_FORTIFY_SOURCE=3>)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  target_compile_options(oru_flags INTERFACE $<$<CONFIG:Release>:-fcf-protection=full>)
endif()
target_link_options(oru_flags INTERFACE
  $<$<CONFIG:Release>:LINKER:-z,relro,-z,now,-z,noexecstack>)

if(ORUAPI_SANITIZE)
  target_compile_options(oru_flags INTERFACE
    -fsanitize=${ORUAPI_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(oru_flags INTERFACE -fsanitize=${ORUAPI_SANITIZE})
  target_compile_definitions(oru_flags INTERFACE ORUAPI_SANITIZED=1)
endif()

# The libraries are C++ without exceptions and run-time types; tests and tools use them as they like.
add_library(oru_library_flags INTERFACE)
target_link_libraries(oru_library_flags INTERFACE oru_flags)
target_compile_options(oru_library_flags INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions> $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>)
