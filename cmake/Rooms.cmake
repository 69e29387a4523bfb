# A room is one folder of a program's sources built as a static library. Its headers are linked into an include root
# of its own, so that a room can include only itself and the rooms it names under KNOWS: an include
# that the architecture forbids does not compile.

# Whose rooms add_room makes: the prefix of the targets, the folder of the sources. A program of its own
# sets both in its own CMakeLists.txt.
set(ROOMS_PREFIX voxtrel)
set(ROOMS_SOURCES "${PROJECT_SOURCE_DIR}/src")

# add_room(<folder below ROOMS_SOURCES> [KNOWS <room>...] [LINKS <library>...])
# Makes the target <prefix>_<folder>, slashes turned into underscores.
function(add_room folder)
  cmake_parse_arguments(ROOM "" "" "KNOWS;LINKS" ${ARGN})
  string(REPLACE "/" "_" name "${folder}")
  set(target "${ROOMS_PREFIX}_${name}")
  set(root "${CMAKE_BINARY_DIR}/rooms/${ROOMS_PREFIX}/${name}")

  file(GLOB headers CONFIGURE_DEPENDS "${ROOMS_SOURCES}/${folder}/*.h")
  file(GLOB sources CONFIGURE_DEPENDS "${ROOMS_SOURCES}/${folder}/*.cpp")
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  file(REMOVE_RECURSE "${root}")
  file(MAKE_DIRECTORY "${root}/${folder}")
  foreach(header IN LISTS headers)
    get_filename_component(file "${header}" NAME)
    file(CREATE_LINK "${header}" "${root}/${folder}/${file}" SYMBOLIC)
  endforeach()

  list(TRANSFORM ROOM_KNOWS REPLACE "/" "_")
  list(TRANSFORM ROOM_KNOWS PREPEND "${ROOMS_PREFIX}_")
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
