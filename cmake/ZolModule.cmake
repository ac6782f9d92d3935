# zol_add_module(<name> SOURCES ... HEADERS ...)
# Declares one module of the library as an OBJECT library. SOURCES are paths relative
# to the module folder; HEADERS are its installed public headers (also relative).
find_package(Threads REQUIRED)

set(ZOL_WARNINGS -Wall -Wextra -Wpedantic -Wshadow)

function(zol_add_module name)
    cmake_parse_arguments(M "" "" "SOURCES;HEADERS" ${ARGN})
    set(target zol_${name})
    add_library(${target} OBJECT ${M_SOURCES})
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
    target_include_directories(${target} SYSTEM PRIVATE ${ANN_INCLUDE_DIR})
    target_compile_definitions(${target} PRIVATE ZOL_BUILDING_LIBRARY)
    target_compile_options(${target} PRIVATE ${ZOL_WARNINGS})
    target_link_libraries(${target} PRIVATE Eigen3::Eigen Threads::Threads)
    set_target_properties(${target} PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    set_property(GLOBAL APPEND PROPERTY ZOL_MODULES ${target})
    file(RELATIVE_PATH rel "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
    foreach(h IN LISTS M_HEADERS)
        set_property(GLOBAL APPEND PROPERTY ZOL_PUBLIC_HEADERS "${rel}/${h}")
    endforeach()
endfunction()
