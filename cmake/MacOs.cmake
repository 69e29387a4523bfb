# Objective-C++ for the macOS adapters. Elsewhere they are built only to test them, where VOXTREL_MACOS_RIG
# names a folder with work-alikes of AppKit and Foundation (rig.tar.xz, shim/) and VOXTREL_MACOS_CHECK one with
# declarations of Apple's other frameworks (stub_sdk/).
foreach(folder VOXTREL_MACOS_RIG VOXTREL_MACOS_CHECK)
  if(DEFINED ENV{${folder}})
    set(${folder} "$ENV{${folder}}" CACHE PATH "Where the macOS adapters are tested without a Mac" FORCE)
  endif()
endforeach()
# Not where rooms are compiled as one source: the analysis and the sanitizers have flags that are not the rig's.
if(NOT APPLE AND (NOT VOXTREL_MACOS_RIG OR NOT VOXTREL_TESTS OR CMAKE_UNITY_BUILD))
  return()
endif()

# What every Objective-C++ source is built with; links what AppKit programs need.
add_library(voxtrel_macos_sdk INTERFACE)
target_compile_options(voxtrel_macos_sdk INTERFACE $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc -fblocks>)
set(CMAKE_OBJCXX_STANDARD 20)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
set(CMAKE_OBJCXX_EXTENSIONS OFF)

if(APPLE)
  enable_language(OBJCXX)
  foreach(framework AppKit ApplicationServices AVFoundation Accelerate Foundation ServiceManagement
                    UserNotifications)
    target_link_libraries(voxtrel_macos_sdk INTERFACE "-framework ${framework}")
  endforeach()
else()
  include(cmake/MacOsRig.cmake)
endif()
