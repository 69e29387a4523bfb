# The Linux adapters, one room per outside service, and the desktop that puts them together.
add_room(voxtrel/platform/kissfft KNOWS voxtrel/platform LINKS PkgConfig::KISSFFT)
target_compile_options(voxtrel_platform_kissfft PRIVATE ${voxtrel_float_options})
add_room(voxtrel/platform/posix KNOWS voxtrel/platform common/base common/posix LINKS Threads::Threads)
# What posix/ leaves to each system; the two need each other's code, not each other's headers.
add_room(voxtrel/platform/linux/process KNOWS voxtrel/platform/posix)
# Programs with macOS's adapters have the property VOXTREL_MACOS and take that system's part.
set(system_process
    $<IF:$<BOOL:$<TARGET_PROPERTY:VOXTREL_MACOS>>,voxtrel_platform_macos_process,voxtrel_platform_linux_process>)
target_link_libraries(voxtrel_platform_posix PUBLIC $<LINK_ONLY:${system_process}>)

set(CMAKE_AUTOMOC ON)
add_room(voxtrel/platform/linux/log KNOWS voxtrel/platform LINKS PkgConfig::SYSTEMD)
add_room(voxtrel/platform/linux/dbus KNOWS common/dbus common/posix PUBLIC_LINKS Qt6::DBus)
add_room(voxtrel/platform/linux/x11 KNOWS common/x11 LINKS PkgConfig::XCB_WINDOWS Qt6::Gui)
add_room(voxtrel/platform/linux/application
         KNOWS voxtrel/platform common/posix voxtrel/platform/linux/x11
         PUBLIC_LINKS Qt6::Gui LINKS Qt6::Widgets)
add_room(voxtrel/platform/linux/tray
         KNOWS voxtrel/platform common/base voxtrel/platform/linux/dbus voxtrel/platform/linux/x11
         LINKS Qt6::Widgets Qt6::DBus Qt6::Svg)
add_room(voxtrel/platform/linux/windows
         KNOWS voxtrel/platform voxtrel/download voxtrel/forms voxtrel/platform/linux/application
               voxtrel/platform/linux/dbus voxtrel/platform/linux/x11
         LINKS Qt6::Widgets Qt6::DBus)
add_room(voxtrel/platform/linux/notifications
         KNOWS voxtrel/platform voxtrel/platform/linux/application voxtrel/platform/linux/dbus
         LINKS Qt6::DBus)
add_room(voxtrel/platform/linux/sound KNOWS voxtrel/platform common/pulse)
add_room(voxtrel/platform/linux/overlay
         KNOWS voxtrel/platform common/posix voxtrel/platform/linux/x11
         LINKS Qt6::Gui)
# The first is in no package of Debian 12.
add_wayland_protocols(voxtrel_layer_shell_protocols
                      platform/linux/layershell/wlr-layer-shell-v1.xml
                      "${WAYLAND_PROTOCOLS}/stable/viewporter/viewporter.xml"
                      "${WAYLAND_PROTOCOLS}/staging/fractional-scale/fractional-scale-v1.xml")
add_room(voxtrel/platform/linux/layershell
         KNOWS voxtrel/platform common/posix common/wayland voxtrel/platform/linux/overlay
         LINKS Qt6::Gui voxtrel_layer_shell_protocols)
add_room(voxtrel/platform/linux/permissions
         KNOWS voxtrel/platform common/base voxtrel/platform/linux/dbus voxtrel/platform/linux/x11
         LINKS Qt6::DBus)
add_room(voxtrel/platform/linux/session
         KNOWS voxtrel/platform common/base common/posix voxtrel/platform/linux/application
               voxtrel/platform/linux/dbus
         LINKS Qt6::DBus PkgConfig::SYSTEMD)
add_room(voxtrel/platform/linux
         KNOWS voxtrel/platform voxtrel/supervisor common/base common/posix voxtrel/platform/posix
               voxtrel/platform/kissfft voxtrel/platform/linux/application
               voxtrel/platform/linux/dbus voxtrel/platform/linux/layershell
               voxtrel/platform/linux/log voxtrel/platform/linux/notifications voxtrel/platform/linux/overlay
               voxtrel/platform/linux/permissions voxtrel/platform/linux/session
               voxtrel/platform/linux/sound voxtrel/platform/linux/tray
               voxtrel/platform/linux/windows
         LINKS Qt6::Widgets Qt6::DBus)
set(CMAKE_AUTOMOC OFF)
add_library(voxtrel_desktop ALIAS voxtrel_platform_linux)

include("${PROJECT_SOURCE_DIR}/packaging/linux/packaging.cmake")
qt_add_resources(voxtrel_platform_linux_tray icons PREFIX /icons
                 BASE "${VOXTREL_ICONS}/symbolic/apps" FILES ${VOXTREL_SYMBOLIC_ICONS})
qt_add_resources(voxtrel_platform_linux_application application_icon PREFIX /icons
                 BASE "${VOXTREL_ICONS}/scalable/apps" FILES ${VOXTREL_APPLICATION_ICON})
