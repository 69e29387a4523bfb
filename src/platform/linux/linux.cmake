# The Linux adapters: Qt 6 for the main loop, the tray and D-Bus; systemd's library for the journal
# and the login manager.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets DBus Svg)
find_package(PkgConfig REQUIRED)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb xcb-shape)
pkg_check_modules(PULSE REQUIRED IMPORTED_TARGET libpulse)
pkg_check_modules(KISSFFT REQUIRED IMPORTED_TARGET kissfft-float)

add_room(platform/kissfft KNOWS platform LINKS PkgConfig::KISSFFT)
add_library(voxtrel_fft ALIAS voxtrel_platform_kissfft)
add_room(platform/posix KNOWS platform LINKS Threads::Threads)
# What posix/ leaves to each system; the two need each other's code, not each other's headers.
add_room(platform/linux/process KNOWS platform/posix)
target_link_libraries(voxtrel_platform_posix PUBLIC $<LINK_ONLY:voxtrel_platform_linux_process>)
set(CMAKE_AUTOMOC ON)
add_room(platform/linux KNOWS platform platform/posix platform/kissfft download settings
         LINKS Qt6::Widgets Qt6::DBus Qt6::Svg PkgConfig::SYSTEMD PkgConfig::XCB
               PkgConfig::PULSE)
set(CMAKE_AUTOMOC OFF)
add_library(voxtrel_desktop ALIAS voxtrel_platform_linux)

include(packaging/linux/packaging.cmake)
qt_add_resources(voxtrel_platform_linux icons PREFIX /icons
                 BASE "${VOXTREL_ICONS}/symbolic/apps" FILES ${VOXTREL_SYMBOLIC_ICONS})
qt_add_resources(voxtrel_platform_linux application_icon PREFIX /icons
                 BASE "${VOXTREL_ICONS}/scalable/apps" FILES ${VOXTREL_APPLICATION_ICON})
