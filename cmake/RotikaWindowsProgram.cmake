# rotika_describe_program(target description [ICON]): adds version information, manifest and, with ICON, the icon, and
# links with protections against memory faults. The linker's defaults are the same, but differ between distributions.

function(rotika_describe_program target description)
    set(manifest ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest)
    set(resources ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    set(needed ${manifest})
    set(icon_line "")
    set(update_key_line "")
    if(ROTIKA_UPDATE_KEY)
        set(update_key_line "EdDSAPub EDDSA { \"${ROTIKA_UPDATE_KEY}\" }") # the update library reads it from here
    endif()
    if(ARGN STREQUAL "ICON")
        set(icon_line "IDI_ICON1 ICON \"${ROTIKA_ICON}\"")
        list(APPEND needed ${ROTIKA_ICON})
        add_dependencies(${target} rotika_icon)
    endif()
    configure_file(${PROJECT_SOURCE_DIR}/common/windows/program.manifest.in ${manifest} @ONLY)
    configure_file(${PROJECT_SOURCE_DIR}/common/windows/program.rc.in ${resources} @ONLY)
    target_sources(${target} PRIVATE ${resources})
    set_source_files_properties(${resources} PROPERTIES OBJECT_DEPENDS "${needed}")
    target_link_options(${target} PRIVATE LINKER:--dynamicbase,--high-entropy-va,--nxcompat
                                          LINKER:--no-insert-timestamp) # two builds give the same bytes
endfunction()
