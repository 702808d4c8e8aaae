# larkspur_module(NAME SOURCES … USES …): one static library per folder under src/. It sees the folders that USES
# names and nothing else; tests/structure holds the same rule for the include lines.
function(larkspur_module name)
    cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
    add_library(larkspur_${name} STATIC ${ARG_SOURCES})
    target_compile_definitions(larkspur_${name} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH)
    target_include_directories(larkspur_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(larkspur_${name} PUBLIC larkspur_compiler ${ARG_USES})
endfunction()
