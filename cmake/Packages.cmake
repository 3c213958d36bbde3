# Packages for Debian: cmake --preset package && cmake --build --preset package && cpack --preset package
# One per component: the library, what programs are built with, the plugin of each GStreamer, and the tool.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR Quenra)
set(CPACK_PACKAGE_CONTACT "Quenra <packages@quenra.example>")
# Each package has its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/PackageFiles.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://quenra.example/)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/Player)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# vire_package(COMPONENT NAME SECTION SUMMARY TEXT [COMPONENT...]): a package and the components that it depends on
macro(vire_package aComponent aName aSection aSummary aText)
    list(APPEND CPACK_COMPONENTS_ALL ${aComponent})
    string(TOUPPER ${aComponent} lKey)
    set(CPACK_DEBIAN_${lKey}_PACKAGE_NAME ${aName})
    set(CPACK_DEBIAN_${lKey}_PACKAGE_SECTION ${aSection})
    set(CPACK_COMPONENT_${lKey}_DESCRIPTION "${aSummary}\n${aText}")
    set(CPACK_COMPONENT_${lKey}_DEPENDS ${ARGN})
endmacro()

# Without shared libraries the tool and the plugin have the library within them.
set(lLibrary)
if(BUILD_SHARED_LIBS)
    set(lLibrary libplayer)
    vire_package(libplayer libplayer${PROJECT_VERSION_MAJOR} libs "RTSP media client library"
        "Opens an RTSP presentation, receives its tracks by RTP, and hands out\ntimestamped access units of H.264, MPEG-4 visual, AAC and AMR.")
    # Beside what CPack writes itself.
    set(CPACK_DEBIAN_LIBPLAYER_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
endif()
vire_package(libplayer-dev libplayer-dev libdevel "RTSP media client library (development files)"
    "Headers, pkg-config file and CMake package of the library Player." ${lLibrary})
foreach(lLeg 1.0 0.10)
    if(TARGET element-${lLeg}-plugin)
        vire_package(element-${lLeg} gstreamer${lLeg}-virertsp libs "RTSP network source for GStreamer ${lLeg}"
            "The element virertspsrc has one pad per track of an RTSP presentation,\nseeks, switches channels, and recovers from network loss."
            ${lLibrary})
    endif()
endforeach()
vire_package(virertsp virertsp video "records and examines what RTSP servers play"
    "The command virertsp records the tracks of a presentation to files, tells\nwhat a server says of it, and shows the reception."
    ${lLibrary})

# What Debian wants in every package, see PackageFiles.cmake.
set(CPACK_VIRE_FILES ${PROJECT_BINARY_DIR}/debian)
execute_process(COMMAND date -u -R -d ${VIRE_RELEASE_DATE} OUTPUT_VARIABLE lDate OUTPUT_STRIP_TRAILING_WHITESPACE)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${CPACK_VIRE_FILES}/changelog.Debian @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/copyright ${CPACK_VIRE_FILES}/copyright COPYONLY)
configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${CPACK_VIRE_FILES}/changelog COPYONLY)
include(CPack)
