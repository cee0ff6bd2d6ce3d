# What every target of ours has in common, as a target and not as global flags.
add_library(vistrel_options INTERFACE)
target_compile_options(vistrel_options INTERFACE -Wall -Wextra -Wshadow -Wconversion)
if(VISTREL_WARNINGS_AS_ERRORS)
    target_compile_options(vistrel_options INTERFACE -Werror)
endif()
target_compile_definitions(vistrel_options INTERFACE QT_MESSAGELOGCONTEXT)

# What the programs have besides that are installed: defences against attacks through memory. The
# sanitizers find the same and more, and need the memory functions as they are. A build that is
# delivered also has no trace of the folders it was made in, so that two builds have the same bytes.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
add_library(vistrel_delivered INTERFACE)
target_link_options(vistrel_delivered INTERFACE -Wl,-z,relro -Wl,-z,now)
if(VISTREL_DELIVERY)
    target_compile_options(vistrel_delivered INTERFACE
        "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=" "-ffile-prefix-map=${PROJECT_BINARY_DIR}/=")
endif()
if(NOT CMAKE_CXX_FLAGS MATCHES "fsanitize")
    target_compile_options(vistrel_delivered INTERFACE
        -fstack-protector-strong
        "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>") # needs an optimiser
endif()

# vistrel_room(NAME SOURCES ... LINK ...): one static library per folder of Src, vistrel_NAME. LINK
# names the rooms and the libraries whose headers the room includes, and no others are found by its
# compiler: every room has a folder of its own with one link to its sources, which only those see that
# name the room themselves. What the named rooms need is linked, but not seen. Qt Core is everyone's.
function(vistrel_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;LINK" ${ARGN})
    set(view "${PROJECT_BINARY_DIR}/rooms/${name}")
    file(MAKE_DIRECTORY "${view}")
    file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}" "${view}/${name}" SYMBOLIC)

    set(library vistrel_${name})
    if(ROOM_SOURCES)
        add_library(${library} STATIC ${ROOM_SOURCES})
        target_include_directories(${library} PUBLIC "${view}")
        # PRIVATE: a static library passes on what must be linked, and none of the include folders.
        target_link_libraries(${library} PUBLIC Qt::Core PRIVATE ${ROOM_LINK} vistrel_options
                                                            vistrel_delivered)
    else()
        add_library(${library} INTERFACE)
        target_include_directories(${library} INTERFACE "${view}")
        target_link_libraries(${library} INTERFACE Qt::Core)
    endif()
    list(JOIN ROOM_LINK " " line)
    set_property(GLOBAL APPEND PROPERTY VISTREL_ROOMS "${name}: ${line}")
endfunction()
