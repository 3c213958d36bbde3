# vire_headers_alone(TARGET DIR...): an object library with one source per header below the folders,
# which includes that header first and alone. TARGET's include folders apply.
# Once is enough: what a header lacks it lacks on every machine, and with sanitizers as without. Users need it never.
function(vire_headers_alone aTarget)
    if(VIRE_SANITIZE OR CMAKE_CROSSCOMPILING OR NOT BUILD_TESTING)
        return()
    endif()
    set(lSources)
    foreach(lDir ${ARGN})
        file(GLOB_RECURSE lHeaders CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR}/${lDir}
            ${CMAKE_CURRENT_SOURCE_DIR}/${lDir}/*.hpp)
        foreach(lHeader ${lHeaders})
            set(lSource ${CMAKE_CURRENT_BINARY_DIR}/alone/${lDir}/${lHeader}.cpp)
            file(CONFIGURE OUTPUT ${lSource} CONTENT "#include \"@lHeader@\"  // alone\n" @ONLY)
            list(APPEND lSources ${lSource})
        endforeach()
    endforeach()
    add_library(${aTarget}-headers-alone OBJECT ${lSources})
    target_link_libraries(${aTarget}-headers-alone PRIVATE ${aTarget})
    target_include_directories(${aTarget}-headers-alone PRIVATE $<TARGET_PROPERTY:${aTarget},INCLUDE_DIRECTORIES>)
    vire_warnings(${aTarget}-headers-alone)
endfunction()
