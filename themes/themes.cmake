# Makes the style sheet of each theme, and the small pictures in it, from what the themes share (theme.qss.in and the
# SVG outlines in glyphs/) and one palette per theme: a file `<theme>.palette` with an entry `name = value` for every
# @name@ of the template. Included, because CMake wants the commands that make a picture in the folder of the target
# that needs it. Sets ROTIKA_SHEETS, ROTIKA_GLYPH_FILES and ROTIKA_GLYPH_BASE.

find_program(RSVG_CONVERT rsvg-convert REQUIRED)

set(ROTIKA_SHEETS "")
set(ROTIKA_GLYPH_FILES "")
set(ROTIKA_GLYPH_BASE ${CMAKE_CURRENT_BINARY_DIR}/glyphs)

# rotika_read_palette(file): sets each entry as a variable, and `entries` to their names.
function(rotika_read_palette file)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    set(entries "")
    file(STRINGS ${file} lines REGEX "^[^#]" ENCODING UTF-8)
    foreach(line IN LISTS lines)
        if(NOT line MATCHES "^([A-Za-z]+) = ([^ ].*)$")
            message(FATAL_ERROR "${file}: expected \"name = value\", found \"${line}\"")
        endif()
        list(APPEND entries ${CMAKE_MATCH_1})
        set(${CMAKE_MATCH_1} "${CMAKE_MATCH_2}" PARENT_SCOPE)
    endforeach()
    set(entries ${entries} PARENT_SCOPE)
endfunction()

# rotika_add_sheet(theme entry...): fails unless the palette's entries are exactly the names in the template.
function(rotika_add_sheet theme)
    set(template ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/theme.qss.in)
    file(READ ${template} text_of_template)
    string(REGEX MATCHALL "@[A-Za-z]+@" needed "${text_of_template}")
    string(REPLACE "@" "" needed "${needed}")
    list(REMOVE_DUPLICATES needed)
    list(REMOVE_ITEM needed theme)
    set(missing ${needed})
    list(REMOVE_ITEM missing ${ARGN})
    set(unused ${ARGN})
    list(REMOVE_ITEM unused ${needed})
    if(missing OR unused)
        message(FATAL_ERROR "${theme}.palette does not fit theme.qss.in. Missing: ${missing}. Unused: ${unused}.")
    endif()
    set(sheet ${CMAKE_CURRENT_BINARY_DIR}/themes/${theme}.qss)
    configure_file(${template} ${sheet} @ONLY)
    set(ROTIKA_SHEETS ${ROTIKA_SHEETS} ${sheet} PARENT_SCOPE)
endfunction()

# rotika_add_glyphs(theme suffix colour glyph...): built into the program as :/<theme>/<glyph><suffix>.png, so that
# they cannot be missing. PNG, because Qt's SVG plug-in is not everywhere; 12 px, and twice that for dense screens.
function(rotika_add_glyphs theme suffix glyphColour)
    foreach(glyph ${ARGN})
        set(name ${ROTIKA_GLYPH_BASE}/${theme}/${glyph}${suffix})
        configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/glyphs/${glyph}.svg.in ${name}.svg @ONLY)
        add_custom_command(
            OUTPUT ${name}.png ${name}@2x.png
            COMMAND ${RSVG_CONVERT} -w 12 -h 12 -o ${name}.png ${name}.svg
            COMMAND ${RSVG_CONVERT} -w 24 -h 24 -o ${name}@2x.png ${name}.svg
            DEPENDS ${name}.svg
            VERBATIM)
        list(APPEND ROTIKA_GLYPH_FILES ${name}.png ${name}@2x.png)
    endforeach()
    set(ROTIKA_GLYPH_FILES ${ROTIKA_GLYPH_FILES} PARENT_SCOPE)
endfunction()

# A function, so that an entry of one palette cannot hide a missing one of the next.
function(rotika_add_theme palette)
    get_filename_component(theme ${palette} NAME_WE)
    rotika_read_palette(${palette})
    rotika_add_sheet(${theme} ${entries})
    rotika_add_glyphs(${theme} "" "${text}" up down right)
    rotika_add_glyphs(${theme} "" "${textOnAccent}" check)
    rotika_add_glyphs(${theme} -menu "${text}" check)
    rotika_add_glyphs(${theme} -selected "${selectedRowText}" right down)
    rotika_add_glyphs(${theme} -disabled "${disabledText}" up down check)
    set(ROTIKA_SHEETS ${ROTIKA_SHEETS} PARENT_SCOPE)
    set(ROTIKA_GLYPH_FILES ${ROTIKA_GLYPH_FILES} PARENT_SCOPE)
endfunction()

file(GLOB palettes CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*.palette)
foreach(palette ${palettes})
    rotika_add_theme(${palette})
endforeach()
