# The macOS adapters, one room per outside service.

# add_macos_room(<folder> [KNOWS <folder>...]): a room of Objective-C++ under voxtrel/platform/macos. The
# tests link every one.
function(add_macos_room folder)
  add_room(voxtrel/platform/macos/${folder} ${ARGN} PUBLIC_LINKS voxtrel_macos_sdk)
  string(REPLACE "/" "_" target "voxtrel_platform_macos_${folder}")
  set_property(GLOBAL APPEND PROPERTY VOXTREL_MACOS_ROOMS ${target})
endfunction()

add_macos_room(foundation)
add_macos_room(application KNOWS voxtrel/platform voxtrel/platform/macos/foundation common/posix)
add_macos_room(log KNOWS voxtrel/platform)
add_macos_room(notifications KNOWS voxtrel/platform voxtrel/platform/macos/foundation)
add_macos_room(overlay KNOWS voxtrel/platform voxtrel/platform/macos/foundation)
add_macos_room(permissions KNOWS voxtrel/platform voxtrel/platform/macos/foundation)
# What posix/ leaves to each system.
add_macos_room(process KNOWS voxtrel/platform/posix common/posix)
add_macos_room(session KNOWS voxtrel/platform voxtrel/platform/macos/foundation)
add_macos_room(sound KNOWS voxtrel/platform voxtrel/platform/macos/foundation)
add_macos_room(statusitem KNOWS voxtrel/platform voxtrel/platform/macos/foundation)
add_macos_room(vdsp KNOWS voxtrel/platform)
add_macos_room(windows KNOWS voxtrel/platform voxtrel/download voxtrel/forms
                             voxtrel/platform/macos/foundation)

# The desktop that puts the adapters together.
add_room(voxtrel/platform/macos
         KNOWS voxtrel/platform common/base voxtrel/platform/posix voxtrel/platform/macos/application
               voxtrel/platform/macos/log voxtrel/platform/macos/notifications
               voxtrel/platform/macos/overlay voxtrel/platform/macos/permissions
               voxtrel/platform/macos/session voxtrel/platform/macos/sound
               voxtrel/platform/macos/statusitem voxtrel/platform/macos/vdsp
               voxtrel/platform/macos/windows
         PUBLIC_LINKS voxtrel_macos_sdk)
set_property(GLOBAL APPEND PROPERTY VOXTREL_MACOS_ROOMS voxtrel_platform_macos)
