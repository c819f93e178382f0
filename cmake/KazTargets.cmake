# The rules of every target of this tree.

add_library(kaz_build_rules INTERFACE)
target_compile_features(kaz_build_rules INTERFACE cxx_std_20)
target_compile_options(kaz_build_rules INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Wold-style-cast
  -Woverloaded-virtual -Wcast-align -Wformat=2 -Wimplicit-fallthrough -Wswitch-enum
  -Wdeprecated-copy-dtor
  $<$<BOOL:${KAZ_WERROR}>:-Werror>)
# In sources that are compiled together -Wshadow reports false shadows.
target_compile_options(kaz_build_rules INTERFACE $<$<NOT:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wshadow>)
# With a sanitizer, GCC no longer knows what the standard library initialises and how long its strings are.
if(KAZ_SANITIZED AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(kaz_build_rules INTERFACE
    -Wno-array-bounds -Wno-maybe-uninitialized -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread)
endif()

# Optimizing, GCC 12 sees an assignment of one character to a std::string as a copy onto itself.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  target_compile_options(kaz_build_rules INTERFACE -Wno-restrict)
endif()

# Release builds contain no path of this machine, and are hardened as far as the processor allows.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  include(CheckCXXCompilerFlag)
  set(CMAKE_REQUIRED_FLAGS -Werror)  # Clang only warns about a flag that is another processor's
  foreach(flag IN ITEMS -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER "kaz_has${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    target_compile_options(kaz_build_rules INTERFACE $<$<BOOL:${${known}}>:${flag}>)
  endforeach()
  unset(CMAKE_REQUIRED_FLAGS)
  target_compile_options(kaz_build_rules INTERFACE
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=/usr/src/${PROJECT_NAME}"
    "-ffile-prefix-map=${PROJECT_BINARY_DIR}=/usr/src/${PROJECT_NAME}/build")
endif()

# A room is a folder that includes name, without the leading src, tools or tests: the headers of src/communicator are
# included as "communicator/communicator.h". TARGET finds those of FOLDER, and with PUBLIC or INTERFACE so do the targets
# that link it. Each room has a separate folder of links to its headers, so an include of a room that is not linked does
# not build.
#
#   kaz_add_room(TARGET PUBLIC|PRIVATE|INTERFACE [FOLDER])
function(kaz_add_room target scope)
  set(folder "${CMAKE_CURRENT_SOURCE_DIR}")
  if(ARGC GREATER 2)
    cmake_path(ABSOLUTE_PATH ARGV2 BASE_DIRECTORY "${folder}" NORMALIZE OUTPUT_VARIABLE folder)
  endif()
  cmake_path(RELATIVE_PATH folder BASE_DIRECTORY "${PROJECT_SOURCE_DIR}" OUTPUT_VARIABLE path)
  string(REGEX REPLACE "^(src|tools|tests)/|/src$" "" room "${path}")
  string(REPLACE "/" "." name "${room}")
  set(root "${PROJECT_BINARY_DIR}/rooms/${name}")
  # Links to each header, not to the folder, because a folder inside it is another room.
  if(IS_SYMLINK "${root}/${room}")
    file(REMOVE "${root}/${room}")
  endif()
  file(MAKE_DIRECTORY "${root}/${room}")
  file(GLOB headers RELATIVE "${folder}" CONFIGURE_DEPENDS "${folder}/*.h")
  foreach(header IN LISTS headers)
    file(CREATE_LINK "${folder}/${header}" "${root}/${room}/${header}" SYMBOLIC)
  endforeach()
  target_include_directories(${target} ${scope} "$<BUILD_INTERFACE:${root}>")
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_compile_options(${target} ${scope}
      "$<BUILD_INTERFACE:-ffile-prefix-map=${root}/${room}=/usr/src/${PROJECT_NAME}/${path}>")
  endif()
endfunction()

# One folder is one layer is one target is one room. A layer's headers are found only by the targets that name it in
# USES: links are private, so nothing is inherited, and an include that skips a layer does not build. A layer without
# sources has only headers.
#
#   kaz_add_layer(NAME [SOURCES file...] USES target... [PUBLIC_USES target...])
function(kaz_add_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES;PUBLIC_USES")
  if(NOT arg_SOURCES)
    add_library(${name} INTERFACE)
    kaz_add_room(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${arg_PUBLIC_USES})
    return()
  endif()
  add_library(${name} STATIC ${arg_SOURCES})
  kaz_add_room(${name} PUBLIC)
  target_link_libraries(${name} PRIVATE kaz_build_rules ${arg_USES} PUBLIC ${arg_PUBLIC_USES})
  set_target_properties(${name} PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON CXX_EXTENSIONS OFF)
endfunction()

# A shared library with a fixed SONAME version, linked without undefined symbols and bound at load time.
#
#   kaz_add_shared_library(NAME SOURCES file... USES target... [PUBLIC_USES target...] INCLUDES dir... [MAP file])
function(kaz_add_shared_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "MAP" "SOURCES;USES;PUBLIC_USES;INCLUDES")
  add_library(${name} SHARED ${arg_SOURCES} ${arg_MAP})
  foreach(dir IN LISTS arg_INCLUDES)
    target_include_directories(${name} PUBLIC "$<BUILD_INTERFACE:${dir}>")
  endforeach()
  target_include_directories(${name} PUBLIC "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
  # Targets that link a library need not know what it uses inside, so none of that is exported.
  list(TRANSFORM arg_USES REPLACE "(.+)" "$<BUILD_INTERFACE:\\1>")
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:kaz_build_rules> ${arg_USES} PUBLIC ${arg_PUBLIC_USES})
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION 0
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON CXX_EXTENSIONS OFF)
  # Sanitizer run-times are resolved from the executable, so only plain builds can insist on -z defs.
  target_link_options(${name} PRIVATE -Wl,-z,relro -Wl,-z,now -Wl,--as-needed
    $<$<NOT:$<BOOL:${KAZ_SANITIZED}>>:-Wl,-z,defs>)
  if(arg_MAP)
    target_link_options(${name} PRIVATE "-Wl,--version-script=${arg_MAP}")
    set_target_properties(${name} PROPERTIES LINK_DEPENDS "${arg_MAP}")
  endif()
endfunction()
