# The small pictures of the style sheets (arrows and check marks), drawn from one set of SVG outlines in the colours
# of each theme and built into the program as :/<theme>/<glyph>[-disabled].png, so that a sheet can never lose them.
# PNG, because Qt's SVG plug-in is not everywhere. Included, so that the commands stand beside the resource file that
# needs them. Sets ROTIKA_GLYPH_FILES and ROTIKA_GLYPH_BASE.

find_program(RSVG_CONVERT rsvg-convert REQUIRED)

set(ROTIKA_GLYPH_FILES "")
set(ROTIKA_GLYPH_BASE ${CMAKE_CURRENT_BINARY_DIR}/glyphs)

# rotika_add_glyphs(theme suffix colour glyph...): 12 px, and twice that for dense screens.
function(rotika_add_glyphs theme suffix GLYPH_COLOUR)
    foreach(glyph ${ARGN})
        set(name ${ROTIKA_GLYPH_BASE}/${theme}/${glyph}${suffix})
        configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/${glyph}.svg.in ${name}.svg @ONLY)
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

set(arrows up down left right)
rotika_add_glyphs(fluent "" "#1B2433" ${arrows})
rotika_add_glyphs(fluent "" "#FFFFFF" check)
rotika_add_glyphs(fluent -menu "#1B2433" check)
rotika_add_glyphs(fluent -selected "#FFFFFF" right down)
rotika_add_glyphs(fluent -disabled "#98A2B3" ${arrows} check)
rotika_add_glyphs(neon "" "#E8ECFF" ${arrows})
rotika_add_glyphs(neon "" "#0B1020" check)
rotika_add_glyphs(neon -menu "#E8ECFF" check)
rotika_add_glyphs(neon -selected "#FFFFFF" right down)
rotika_add_glyphs(neon -disabled "#5E6890" ${arrows} check)
rotika_add_glyphs(pro "" "#E8E6DF" ${arrows})
rotika_add_glyphs(pro "" "#1D1F24" check)
rotika_add_glyphs(pro -menu "#E8E6DF" check)
rotika_add_glyphs(pro -selected "#FFFFFF" right down)
rotika_add_glyphs(pro -disabled "#7A7D86" ${arrows} check)
