# A room is one folder of src/ built as a static library. Its headers are linked into an include root
# of its own, so that a room can include only itself and the rooms it names under KNOWS: an include
# that the architecture forbids does not compile.

set(VOXTREL_ROOMS "${CMAKE_BINARY_DIR}/rooms")

# add_room(<folder below src/> [KNOWS <room>...] [LINKS <library>...])
# Makes the target voxtrel_<folder>, slashes turned into underscores.
function(add_room folder)
  cmake_parse_arguments(ROOM "" "" "KNOWS;LINKS" ${ARGN})
  string(REPLACE "/" "_" name "${folder}")
  set(target "voxtrel_${name}")
  set(root "${VOXTREL_ROOMS}/${name}")

  file(GLOB headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/${folder}/*.h")
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/${folder}/*.cpp")
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  file(REMOVE_RECURSE "${root}")
  file(MAKE_DIRECTORY "${root}/${folder}")
  foreach(header IN LISTS headers)
    get_filename_component(file "${header}" NAME)
    file(CREATE_LINK "${header}" "${root}/${folder}/${file}" SYMBOLIC)
  endforeach()

  list(TRANSFORM ROOM_KNOWS REPLACE "/" "_")
  list(TRANSFORM ROOM_KNOWS PREPEND "voxtrel_")
  if(sources)
    add_library(${target} STATIC ${sources})
    target_include_directories(${target} PUBLIC "${root}")
    target_link_libraries(${target} PUBLIC ${ROOM_KNOWS} PRIVATE voxtrel_warnings ${ROOM_LINKS})
  else()
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE "${root}")
    target_link_libraries(${target} INTERFACE ${ROOM_KNOWS})
  endif()
endfunction()
