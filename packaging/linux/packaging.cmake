# What a desktop needs to know of the application, in the places where it looks.
set(VOXTREL_PACKAGING "${PROJECT_SOURCE_DIR}/packaging/linux")
set(VOXTREL_ICONS "${VOXTREL_PACKAGING}/icons/hicolor")
file(GLOB VOXTREL_SYMBOLIC_ICONS CONFIGURE_DEPENDS "${VOXTREL_ICONS}/symbolic/apps/*.svg")
set(VOXTREL_APPLICATION_ICON "${VOXTREL_ICONS}/scalable/apps/org.voxtrel.Voxtrel.svg")

install(DIRECTORY "${VOXTREL_ICONS}" DESTINATION "${CMAKE_INSTALL_DATADIR}/icons")
