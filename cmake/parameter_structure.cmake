# The tree of the host parameters: stratovane2.xml beside the plug-in, and the same text inside it,
# on Windows as resource "MRXXML" 1, elsewhere as the section ".mrxxml" of the library, which tools
# read without running anything. The generator runs while building, so it is compiled for the
# building machine even when the plug-in is for another.
if(CMAKE_CROSSCOMPILING)
    find_program(STRATOVANE_BUILD_CXX NAMES c++ g++ clang++ REQUIRED)
else()
    set(STRATOVANE_BUILD_CXX ${CMAKE_CXX_COMPILER})
endif()

set(structure_generator ${CMAKE_BINARY_DIR}/write-parameter-structure)
set(structure_sources ${CMAKE_SOURCE_DIR}/tools/parameter_structure/main.cpp
    ${CMAKE_SOURCE_DIR}/src/automation/parameter_structure.cpp)
set(structure_xml ${CMAKE_BINARY_DIR}/stratovane2.xml)
add_custom_command(OUTPUT ${structure_xml}
    COMMAND ${STRATOVANE_BUILD_CXX} -std=c++20 -I${CMAKE_SOURCE_DIR}/src ${structure_sources}
        -o ${structure_generator}
    COMMAND ${structure_generator} > ${structure_xml}
    DEPENDS ${structure_sources} ${CMAKE_SOURCE_DIR}/src/automation/host_rows.h
        ${CMAKE_SOURCE_DIR}/src/automation/parameter_structure.h
    COMMENT "Writing stratovane2.xml")

if(WIN32)
    enable_language(RC)
    set(structure_source ${CMAKE_BINARY_DIR}/parameter_structure.rc)
    file(CONFIGURE OUTPUT ${structure_source} CONTENT "1 MRXXML \"@structure_xml@\"\n" @ONLY)
else()
    set(structure_source ${CMAKE_BINARY_DIR}/parameter_structure_data.cpp)
    file(CONFIGURE OUTPUT ${structure_source} @ONLY CONTENT
        "__asm__(\".pushsection .mrxxml,\\\"a\\\"\\n.incbin \\\"@structure_xml@\\\"\\n.popsection\");\n")
endif()
set_source_files_properties(${structure_source} PROPERTIES OBJECT_DEPENDS ${structure_xml})
target_sources(stratovane2 PRIVATE ${structure_source})
