# Layers. A header is included by its folder's name ("runtime/Prompts.h"), and a folder is visible to a
# target only if the target links that folder's layer. Each layer therefore publishes an include
# directory that holds nothing but a link to its own folder, and the source root is on nobody's path.

# vandrel_layer(<target> <folder> SOURCES <files...> [LINKS <public libraries...>] [USES <private libraries...>])
# Declares one layer (or one family of a layer) as a static library named <target>, alias Vandrel::<target>.
# <folder> is relative to the source root; headers are listed among the sources.
function(vandrel_layer target folder)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;USES" ${ARGN})
    add_library(${target} STATIC ${ARG_SOURCES})
    add_library(Vandrel::${target} ALIAS ${target})
    vandrel_publish(${target} ${folder})
    target_link_libraries(${target} PUBLIC Vandrel::common ${ARG_LINKS} PRIVATE ${ARG_USES})
endfunction()

# Makes "<folder>/X.h" includable for <target> and whoever links it.
function(vandrel_publish target folder)
    set(view ${CMAKE_BINARY_DIR}/layers/${target})
    get_filename_component(parent ${view}/${folder} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${view}/${folder} COPY_ON_ERROR SYMBOLIC)
    target_include_directories(${target} PUBLIC ${view})
endfunction()
