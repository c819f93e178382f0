include(CheckCXXSourceCompiles)

# Some promises of the library hold only with the help of the platform's D-Bus library. src/dbus/platform_help.h
# detects at compile time what that library offers; this file reports at configure time what it lacks.

# Prints a line for each help that the D-Bus headers in FOLDERS lack, and returns the names in LACKING.
#
#   kaz_report_platform_help(LIBRARY LACKING folder...)
function(kaz_report_platform_help library lacking)
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # headers are enough
  set(CMAKE_REQUIRED_FLAGS -std=c++20)
  set(CMAKE_REQUIRED_INCLUDES ${ARGN} "${PROJECT_SOURCE_DIR}/src")
  set(CMAKE_REQUIRED_QUIET ON)
  set(names "")
  foreach(help IN ITEMS
      "Reconnects<EventLoop>@a lost bus is not reconnected"
      "EndsInTime<EventLoop>@the stop waits for a call in flight, and a pending save may be lost"
      "KeepsSecretsFromItsLog<MessageBuilder>@its log decides whether an error text that repeats a passphrase is kept out"
      "TellsErrors<MessageBuilder>@it is not known why a call of a daemon failed")
    string(REPLACE "@" ";" help "${help}")
    list(GET help 0 concept)
    list(GET help 1 consequence)
    string(REGEX REPLACE "<.*" "" name "${concept}")
    string(MAKE_C_IDENTIFIER "kaz_${library}_${name}" found)
    check_cxx_source_compiles("
      #include <dbus/platform_help.h>
      #include <kaz/dbus/calls.h>
      #include <kaz/dbus/event_loop.h>
      #include <kaz/dbus/message.h>
      namespace kaz::dbus {
      static_assert(${concept});
      }
    " ${found})
    if(NOT ${found})
      list(APPEND names ${name})
      message(STATUS "${library} lacks ${name}: ${consequence}; see docs/subsystems/platform.md")
    endif()
  endforeach()
  set(${lacking} "${names}" PARENT_SCOPE)
endfunction()
