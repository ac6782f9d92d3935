# Installs the current build into a fresh prefix, builds the host project in this
# folder against that prefix and runs it.
# Inputs: BUILD_DIR, HOST_SOURCE_DIR, WORK_DIR, CXX_COMPILER, SANITIZE (may be empty).
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")

function(run)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE rc
        OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}")
    endif()
    message(STATUS "${out}")
endfunction()

set(flags "")
if(SANITIZE)
    set(flags "-fsanitize=${SANITIZE}")
endif()

run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix")
foreach(f include/zol/zol.h include/zol/core/Matrix4x4.h include/zol/runtime/Export.h)
    if(NOT EXISTS "${WORK_DIR}/prefix/${f}")
        message(FATAL_ERROR "not installed: ${f}")
    endif()
endforeach()
# Only the ZOL API is exported from the shared library.
find_program(NM nm)
file(GLOB_RECURSE lib "${WORK_DIR}/prefix/*/libzolc2017.so")
if(NM AND lib)
    execute_process(COMMAND "${NM}" -D --defined-only -C ${lib}
        OUTPUT_VARIABLE symbols RESULT_VARIABLE rc)
    string(REPLACE "\n" ";" symbols "${symbols}")
    foreach(line IN LISTS symbols)
        if(line AND NOT line MATCHES " (ZOL::|typeinfo for ZOL::|typeinfo name for ZOL::|vtable for ZOL::)")
            message(FATAL_ERROR "exported symbol outside the API: ${line}")
        endif()
    endforeach()
endif()
run("${CMAKE_COMMAND}" -S "${HOST_SOURCE_DIR}" -B "${WORK_DIR}/host"
    "-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}"
    "-DCMAKE_CXX_FLAGS=${flags}" "-DCMAKE_EXE_LINKER_FLAGS=${flags}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/host")
run("${WORK_DIR}/host/host")
