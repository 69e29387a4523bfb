# What a desktop needs to know of the application, in the places where it looks.
set(VOXTREL_PACKAGING "${PROJECT_SOURCE_DIR}/packaging/linux")
set(VOXTREL_ICONS "${VOXTREL_PACKAGING}/icons/hicolor")
file(GLOB VOXTREL_SYMBOLIC_ICONS CONFIGURE_DEPENDS "${VOXTREL_ICONS}/symbolic/apps/*.svg")
set(VOXTREL_APPLICATION_ICON "${VOXTREL_ICONS}/scalable/apps/org.voxtrel.Voxtrel.svg")

install(DIRECTORY "${VOXTREL_ICONS}" DESTINATION "${CMAKE_INSTALL_DATADIR}/icons")
install(FILES "${VOXTREL_PACKAGING}/org.voxtrel.Voxtrel.desktop"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
install(FILES "${VOXTREL_PACKAGING}/org.voxtrel.Voxtrel.metainfo.xml"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
install(FILES "${VOXTREL_PACKAGING}/voxtrel.1" "${VOXTREL_PACKAGING}/quillback.1"
        DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")

# Help pages: each is whole by itself, with the common style inside. The program looks for them beside
# itself, in ../share, whether it is installed or not.
set(VOXTREL_HELP "${CMAKE_BINARY_DIR}/share/voxtrel/help")
file(GLOB VOXTREL_HELP_PAGES CONFIGURE_DEPENDS "${VOXTREL_PACKAGING}/help/*.html")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${VOXTREL_PACKAGING}/help/style.css")
file(READ "${VOXTREL_PACKAGING}/help/style.css" VOXTREL_HELP_STYLE)
foreach(page IN LISTS VOXTREL_HELP_PAGES)
  get_filename_component(name "${page}" NAME)
  configure_file("${page}" "${VOXTREL_HELP}/${name}" @ONLY)
endforeach()
install(DIRECTORY "${VOXTREL_HELP}" DESTINATION "${CMAKE_INSTALL_DATADIR}/voxtrel")
