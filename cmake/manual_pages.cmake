# A manual page from its template: configured, compressed where gzip is at
# hand (as packages ship them), installed with the tool, and checked to
# render without a warning.
find_program(GZIP_PROGRAM gzip)
find_program(GROFF_PROGRAM groff)

function(kelvra_manual_page template name)
  set(page ${CMAKE_CURRENT_BINARY_DIR}/page/${name}.1)
  string(REPLACE "-" "_" target ${name})
  configure_file(${template} ${page} @ONLY)
  if(GZIP_PROGRAM)
    set(page_gz ${CMAKE_CURRENT_BINARY_DIR}/${name}.1.gz)
    add_custom_command(OUTPUT ${page_gz}
      COMMAND ${CMAKE_COMMAND} -E copy ${page} ${CMAKE_CURRENT_BINARY_DIR}/${name}.1
      COMMAND ${GZIP_PROGRAM} -9nf ${CMAKE_CURRENT_BINARY_DIR}/${name}.1
      DEPENDS ${page} VERBATIM)
    add_custom_target(${target}_manual ALL DEPENDS ${page_gz})
    install(FILES ${page_gz} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
  else()
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
  endif()
  if(KELVRA_TESTS AND GROFF_PROGRAM)
    add_test(NAME ${target}_manual COMMAND ${GROFF_PROGRAM} -man -ww -z -Tutf8 ${page})
    set_tests_properties(${target}_manual PROPERTIES FAIL_REGULAR_EXPRESSION ".")
  endif()
endfunction()
