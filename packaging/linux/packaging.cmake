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
install(FILES "${VOXTREL_PACKAGING}/voxtrel.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
