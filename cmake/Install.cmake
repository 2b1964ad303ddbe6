# What a package holds: the program, and what makes a desktop know it.
install(TARGETS velmora RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

set(VELMORA_DATA ${PROJECT_SOURCE_DIR}/data)
install(FILES ${VELMORA_DATA}/com.velmora.app.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${VELMORA_DATA}/com.velmora.app.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${VELMORA_DATA}/com.velmora.app.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
# The tray item asks for this one by name.
install(FILES ${VELMORA_DATA}/velmora-symbolic.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/symbolic/apps)
