# A room is one folder of src/, built as a static library. Its headers are linked into an include root of
# its own, so that a room can include only itself and the rooms that it names under KNOWS: an include
# that the architecture forbids does not compile. Headers are named by their path in src/.

# add_room(<folder> [KNOWS <folder>...] [LINKS <library>...] [PUBLIC_LINKS <library>...])
# Folders are named as in src/. Makes the target <folder> with slashes turned into underscores;
# PUBLIC_LINKS are libraries that the room's headers name.
function(add_room folder)
  cmake_parse_arguments(ROOM "" "" "KNOWS;LINKS;PUBLIC_LINKS" ${ARGN})
  string(REPLACE "/" "_" target "${folder}")
  set(root "${CMAKE_BINARY_DIR}/rooms/${target}")

  file(GLOB headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/${folder}/*.h")
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/${folder}/*.cpp"
       "${PROJECT_SOURCE_DIR}/src/${folder}/*.mm")
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  file(REMOVE_RECURSE "${root}")
  file(MAKE_DIRECTORY "${root}/${folder}")
  foreach(header IN LISTS headers)
    get_filename_component(file "${header}" NAME)
    file(CREATE_LINK "${header}" "${root}/${folder}/${file}" SYMBOLIC)
  endforeach()

  list(TRANSFORM ROOM_KNOWS REPLACE "/" "_")
  if(sources)
    add_library(${target} STATIC ${sources})
    target_include_directories(${target} PUBLIC "${root}")
    target_link_libraries(${target} PUBLIC ${ROOM_KNOWS} ${ROOM_PUBLIC_LINKS}
                                    PRIVATE voxtrel_warnings ${ROOM_LINKS})
  else()
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE "${root}")
    target_link_libraries(${target} INTERFACE ${ROOM_KNOWS} ${ROOM_PUBLIC_LINKS})
  endif()
endfunction()
