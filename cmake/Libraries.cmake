# The libraries that the two programs use; docs/architecture.md says why each.
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

# The tray application: main loop, windows, D-Bus; the journal and the login manager; the overlay's
# window; its spectrum.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets DBus Svg)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
pkg_check_modules(XCB_WINDOWS REQUIRED IMPORTED_TARGET xcb xcb-shape xcb-xinput)
pkg_check_modules(KISSFFT REQUIRED IMPORTED_TARGET kissfft-float)

# Both: the sound servers of Linux desktops, PipeWire included; the X server.
pkg_check_modules(PULSE REQUIRED IMPORTED_TARGET libpulse)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)
# Both: what a Wayland compositor offers beyond windows.
include(cmake/Wayland.cmake)

# The engine's settings: typed keys of their own language, with the line of every mistake.
find_package(tomlplusplus REQUIRED)
# Its key and typing: the X server's raw key events, keymap and fake keys, without a library that ends
# the program when the server ends; keymaps as every toolkit reads them; keyboards without an X server.
pkg_check_modules(XCB_KEYS REQUIRED IMPORTED_TARGET xcb xcb-xinput xcb-xkb xcb-xtest)
pkg_check_modules(XKBCOMMON REQUIRED IMPORTED_TARGET xkbcommon xkbcommon-x11)
pkg_check_modules(EVDEV REQUIRED IMPORTED_TARGET libevdev)
# Its download: HTTP with ranges, redirects, proxies and TLS; SHA-256 with the processor's own
# instructions; JSON that may be hostile.
find_package(CURL REQUIRED)
find_package(OpenSSL REQUIRED COMPONENTS Crypto)
find_package(nlohmann_json REQUIRED)
# Sound of any rate to the recogniser's.
pkg_check_modules(SAMPLERATE REQUIRED IMPORTED_TARGET samplerate)
include(cmake/Recognisers.cmake)

if(VOXTREL_TESTS)
  find_package(GTest REQUIRED)
  find_package(ICU REQUIRED COMPONENTS uc i18n)
  find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
endif()
