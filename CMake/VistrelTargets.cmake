# What every target of ours has in common, as a target and not as global flags.
add_library(vistrel_options INTERFACE)
target_compile_options(vistrel_options INTERFACE -Wall -Wextra -Wshadow -Wconversion)
if(VISTREL_WARNINGS_AS_ERRORS)
    target_compile_options(vistrel_options INTERFACE -Werror)
endif()
target_compile_definitions(vistrel_options INTERFACE QT_MESSAGELOGCONTEXT)

# vistrel_room(NAME SOURCES ... LINK ...): one static library per folder of Src. Its link line is
# the architecture: what a room does not link, it may not include.
function(vistrel_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;LINK" ${ARGN})
    add_library(vistrel_${name} STATIC ${ROOM_SOURCES})
    target_include_directories(vistrel_${name} PUBLIC "${PROJECT_SOURCE_DIR}/Src")
    target_link_libraries(vistrel_${name} PUBLIC ${ROOM_LINK} PRIVATE vistrel_options)
endfunction()
