# The Linux adapters: Qt 6 for the main loop, the tray and D-Bus; systemd's library for the journal.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets DBus Svg)
find_package(PkgConfig REQUIRED)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)

pkg_check_modules(KISSFFT REQUIRED IMPORTED_TARGET kissfft-float)

add_room(platform/kissfft KNOWS platform LINKS PkgConfig::KISSFFT)
add_library(voxtrel_fft ALIAS voxtrel_platform_kissfft)
add_room(platform/posix KNOWS platform LINKS Threads::Threads)
set(CMAKE_AUTOMOC ON)
add_room(platform/linux KNOWS platform platform/posix
         LINKS Qt6::Widgets Qt6::DBus Qt6::Svg PkgConfig::SYSTEMD)
set(CMAKE_AUTOMOC OFF)
add_library(voxtrel_desktop ALIAS voxtrel_platform_linux)
