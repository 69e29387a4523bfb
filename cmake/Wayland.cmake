# Clients' code for Wayland's protocols, generated from their descriptions.
find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
pkg_check_modules(WAYLAND REQUIRED IMPORTED_TARGET wayland-client)
pkg_get_variable(WAYLAND_PROTOCOLS wayland-protocols pkgdatadir)

# add_wayland_protocols(<target> <description>...): a library with the header <name>-client.h for each
# description <name>.xml. A path that is not absolute is one of the calling folder.
function(add_wayland_protocols target)
  set(generated)
  foreach(description IN LISTS ARGN)
    get_filename_component(description "${description}" ABSOLUTE)
    get_filename_component(name "${description}" NAME_WE)
    set(header "${CMAKE_CURRENT_BINARY_DIR}/${target}/${name}-client.h")
    set(code "${CMAKE_CURRENT_BINARY_DIR}/${target}/${name}.c")
    add_custom_command(
      OUTPUT "${header}" "${code}" DEPENDS "${description}" VERBATIM
      COMMAND ${WAYLAND_SCANNER} --strict client-header "${description}" "${header}"
      COMMAND ${WAYLAND_SCANNER} --strict private-code "${description}" "${code}")
    list(APPEND generated "${header}" "${code}")
  endforeach()
  file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/${target}")
  add_library(${target} STATIC ${generated})
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_include_directories(${target} SYSTEM INTERFACE "${CMAKE_CURRENT_BINARY_DIR}/${target}")
  target_link_libraries(${target} PUBLIC PkgConfig::WAYLAND)
endfunction()
