# What an installation holds: the programs in folders of the system's own, the stand-in
# service's launcher, the desktop entry, the icons in the theme's sizes and the manual pages.
# The Debian packages are cut from it (debian/).
include(GNUInstallDirs)
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)

if(TARGET mirelo)
  install(TARGETS mirelo DESTINATION ${MIRELO_PROGRAM_FOLDER})
  install(FILES resources/mirelo.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES resources/mirelo.svg DESTINATION ${icons}/scalable/apps)
  install(FILES docs/man/mirelo.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  # The menus' sizes are drawn from the one picture, when the build has the tool to draw them.
  find_program(RSVG_CONVERT rsvg-convert)
  if(RSVG_CONVERT)
    set(pictures)
    foreach(size 16 32 48 128 256)
      set(folder ${CMAKE_BINARY_DIR}/icons/${size}x${size})
      add_custom_command(OUTPUT ${folder}/mirelo.png
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${folder}/mirelo.png
                ${CMAKE_SOURCE_DIR}/resources/mirelo.svg
        DEPENDS resources/mirelo.svg VERBATIM)
      list(APPEND pictures ${folder}/mirelo.png)
      install(FILES ${folder}/mirelo.png DESTINATION ${icons}/${size}x${size}/apps)
    endforeach()
    add_custom_target(mirelo_icons ALL DEPENDS ${pictures})
  endif()
endif()

if(TARGET mirelo-browser)
  install(TARGETS mirelo-browser DESTINATION ${MIRELO_PROGRAM_FOLDER})
endif()

if(TARGET korvalo)
  set(MIRELO_STANDIN_PROGRAM ${CMAKE_INSTALL_PREFIX}/lib/mirelo-standin/korvalo)
  configure_file(korvalo/mirelo-standin.in ${CMAKE_BINARY_DIR}/mirelo-standin @ONLY)
  install(TARGETS korvalo DESTINATION lib/mirelo-standin)
  install(PROGRAMS ${CMAKE_BINARY_DIR}/mirelo-standin DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES docs/man/mirelo-standin.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
