# Our pictures are drawn as SVG in Qml/images. The program reads PNG: every drawing is rendered once
# at its own size and once each, as name@2x.png and name@3x.png, for screens of two and three times
# the density.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
find_program(ICOTOOL icotool REQUIRED)

set(VISTREL_PICTURES
    begin prev play pause next end
    button_camera button_copy button_poi_add button_poi_remove button_poi_edit button_poi_move
    button_list button_picture_alone button_sidebar button_sort button_jobs button_extremes button_units
    icon_check_ok icon_cross_cancel
    button_show_ir button_ir_fullscreen button_transparency button_auto button_lock_levels
    slider_pointer_down slider_pointer_up
    icon_horizontal_pos icon_vertical_pos icon_time_offset icon_contrast icon_brightness
    button_icon_reset_defaults button_edit_field
    vistitle vistitle_light splash_logo splash_logo_light cam_pitch)
# The sizes that a desktop asks of a window's icon.
set(VISTREL_ICON_SIZES 16 24 32 48 64 128 256)

# Renders everything below DIRECTORY, which is laid out as the resource tree: images/*.png and
# logo.ico. Gives the list of files made in OUT_FILES.
function(vistrel_render_pictures directory out_files)
    set(source "${PROJECT_SOURCE_DIR}/Qml/images")
    file(MAKE_DIRECTORY "${directory}/images" "${directory}/icon")
    set(files "")
    foreach(name IN LISTS VISTREL_PICTURES)
        set(once "${directory}/images/${name}.png")
        set(twice "${directory}/images/${name}@2x.png")
        set(thrice "${directory}/images/${name}@3x.png")
        add_custom_command(OUTPUT "${once}" "${twice}" "${thrice}"
            COMMAND "${RSVG_CONVERT}" -o "${once}" "${source}/${name}.svg"
            COMMAND "${RSVG_CONVERT}" --zoom 2 -o "${twice}" "${source}/${name}.svg"
            COMMAND "${RSVG_CONVERT}" --zoom 3 -o "${thrice}" "${source}/${name}.svg"
            DEPENDS "${source}/${name}.svg"
            COMMENT "Rendering ${name}.png" VERBATIM)
        list(APPEND files "images/${name}.png" "images/${name}@2x.png" "images/${name}@3x.png")
    endforeach()

    # The spinner stays a drawing: it is turned while it is shown.
    set(spinner "${directory}/images/loading_spinner.svg")
    add_custom_command(OUTPUT "${spinner}"
        COMMAND "${CMAKE_COMMAND}" -E copy "${source}/loading_spinner.svg" "${spinner}"
        DEPENDS "${source}/loading_spinner.svg" VERBATIM)
    list(APPEND files "images/loading_spinner.svg")

    set(steps "")
    foreach(size IN LISTS VISTREL_ICON_SIZES)
        set(step "${directory}/icon/${size}.png")
        add_custom_command(OUTPUT "${step}"
            COMMAND "${RSVG_CONVERT}" -w ${size} -h ${size} -o "${step}" "${source}/logo.svg"
            DEPENDS "${source}/logo.svg" VERBATIM)
        list(APPEND steps "${step}")
    endforeach()
    add_custom_command(OUTPUT "${directory}/logo.ico"
        COMMAND "${ICOTOOL}" --create --output "${directory}/logo.ico" ${steps}
        DEPENDS ${steps}
        COMMENT "Packing logo.ico" VERBATIM)
    list(APPEND files "logo.ico")
    set(${out_files} "${files}" PARENT_SCOPE)
endfunction()

# The pictures as an object library: linked into an executable, its resources are registered there,
# which a static library would lose.
function(vistrel_make_pictures)
    set(directory "${CMAKE_BINARY_DIR}/Pictures")
    vistrel_render_pictures("${directory}" files)
    set(entries "")
    set(paths "")
    foreach(file IN LISTS files)
        string(APPEND entries "    <file>${file}</file>\n")
        list(APPEND paths "${directory}/${file}")
    endforeach()
    set(qrc "${directory}/pictures.qrc")
    file(CONFIGURE OUTPUT "${qrc}"
         CONTENT "<RCC>\n  <qresource prefix=\"/\">\n${entries}  </qresource>\n</RCC>\n" @ONLY)
    # The first format of resources holds no times of files.
    set(cpp "${directory}/qrc_pictures.cpp")
    add_custom_command(OUTPUT "${cpp}"
        COMMAND Qt5::rcc --format-version 1 --name vistrel_pictures --output "${cpp}" "${qrc}"
        DEPENDS "${qrc}" ${paths}
        COMMENT "Compiling the pictures" VERBATIM)
    add_library(vistrel_pictures OBJECT "${cpp}")
    set_target_properties(vistrel_pictures PROPERTIES AUTOMOC OFF)
    target_link_libraries(vistrel_pictures PUBLIC Qt5::Core PRIVATE vistrel_delivered)
endfunction()

# vistrel_add_pictures(TARGET): TARGET carries qrc:/images/... and :/logo.ico.
function(vistrel_add_pictures target)
    target_link_libraries(${target} PRIVATE vistrel_pictures)
endfunction()
