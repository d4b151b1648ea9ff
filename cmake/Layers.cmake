# Layers. A header is included by its folder's name ("runtime/Prompts.h"), and a folder is visible to a
# target only if the target links that folder's layer. Each layer therefore publishes an include
# directory that holds nothing but a link to its own folder, and the source root is on nobody's path.

# Where the program's own libraries lie, from the folder that it is built or installed into, and from the program.
include(GNUInstallDirs)
set(VANDREL_LIBRARY_FOLDER ${CMAKE_INSTALL_LIBDIR}/vandrel)
file(RELATIVE_PATH VANDREL_LIBRARIES_FROM_PROGRAM
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/vandrel)

# vandrel_layer(<target> <folder> [SHARED] [APART] SOURCES <files...>
#               [LINKS <public libraries...>] [USES <private libraries...>])
# Declares one layer (or one family of a layer) as a library named <target>, alias Vandrel::<target>: a static one,
# or with SHARED one that the program and its modules have in common, for a layer that must exist only once in a
# process; with APART its sources are never joined (a form's names for its own measures recur in every form).
# <folder> is relative to the source root; headers are listed among the sources.
function(vandrel_layer target folder)
    cmake_parse_arguments(ARG "SHARED;APART" "" "SOURCES;LINKS;USES" ${ARGN})
    if(ARG_SHARED)
        add_library(${target} SHARED ${ARG_SOURCES})
        set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET default)
        vandrel_private_library(${target} ${target})
    else()
        add_library(${target} STATIC ${ARG_SOURCES})
    endif()
    if(ARG_APART)
        set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)
    endif()
    add_library(Vandrel::${target} ALIAS ${target})
    vandrel_publish(${target} ${folder})
    target_link_libraries(${target} PUBLIC Vandrel::common ${ARG_LINKS} PRIVATE ${ARG_USES})
endfunction()

# vandrel_module(<name> SOURCES <files...> [LINKS <libraries...>])
# Declares the module <name>, target <name>_module, which the program loads when the first of its windows is opened:
# what it links costs nothing before.
function(vandrel_module name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    set(target ${name}_module)
    add_library(${target} MODULE ${ARG_SOURCES})
    target_link_libraries(${target} PRIVATE Vandrel::common ${ARG_LINKS})
    set_target_properties(${target} PROPERTIES PREFIX "")
    vandrel_private_library(${target} ${name})
    add_dependencies(vandrel ${target})
endfunction()

# Puts a library that is of use to nobody else, under the suite's name and <name>, into the folder of the program's
# own libraries, in the build tree as well as where the suite is installed.
function(vandrel_private_library target name)
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME vandrel-${name}
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${VANDREL_LIBRARY_FOLDER}
        INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${target} LIBRARY DESTINATION ${VANDREL_LIBRARY_FOLDER})
endfunction()

# Makes "<folder>/X.h" includable for <target> and whoever links it.
function(vandrel_publish target folder)
    set(scope PUBLIC)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL INTERFACE_LIBRARY)
        set(scope INTERFACE)
    endif()
    set(view ${CMAKE_BINARY_DIR}/layers/${target})
    get_filename_component(parent ${view}/${folder} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${view}/${folder} COPY_ON_ERROR SYMBOLIC)
    target_include_directories(${target} ${scope} ${view})
endfunction()
