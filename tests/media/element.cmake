# What the tests of the element in a pipeline need: a program that drives it, the plugin files, the launchers.
# `lElementEnvironment` tells the tests; they skip, and say so, what is not there.
set(lElementEnvironment GST_REGISTRIES=${CMAKE_CURRENT_BINARY_DIR})

# Emulated decoders would take many times as long as the media they play.
if(CMAKE_CROSSCOMPILING)
    message(STATUS "built for another machine: the element is not tried in pipelines")
    return()
endif()

if(TARGET element-1.0)
    set(lSupport ${PROJECT_SOURCE_DIR}/GStreamer/tests/support)
    add_executable(element_play element_play.cpp ${lSupport}/Sanitizers.cpp)
    if(VIRE_SANITIZE MATCHES "thread")
        target_sources(element_play PRIVATE ${lSupport}/ThreadSanitizerLocks.cpp)
        list(APPEND lElementEnvironment G_SLICE=always-malloc)
    endif()
    target_link_libraries(element_play PRIVATE element-1.0)
    vire_warnings(element_play)
    list(APPEND lElementEnvironment ELEMENT_PLAY=$<TARGET_FILE:element_play>)
endif()

# An ordinary program can't load a plugin that is built for a sanitizer.
foreach(lLeg 1.0 0.10)
    if(NOT TARGET element-${lLeg}-plugin OR VIRE_SANITIZE)
        continue()
    endif()
    string(REPLACE "." "_" lName ${lLeg})
    pkg_get_variable(lTools gstreamer-${lLeg} toolsdir)
    find_program(GST_LAUNCH_${lName} gst-launch-${lLeg} HINTS ${lTools})
    find_program(GST_INSPECT_${lName} gst-inspect-${lLeg} HINTS ${lTools})
    if(GST_LAUNCH_${lName} AND GST_INSPECT_${lName})
        list(APPEND lElementEnvironment PLUGIN_${lName}=$<TARGET_FILE_DIR:element-${lLeg}-plugin>
            GST_LAUNCH_${lName}=${GST_LAUNCH_${lName}} GST_INSPECT_${lName}=${GST_INSPECT_${lName}})
    else()
        message(STATUS "gst-launch-${lLeg} and gst-inspect-${lLeg} are not there: the element is not tried in them")
    endif()
endforeach()

add_test(NAME media.element_clips COMMAND ${Python3_EXECUTABLE} -c "import element; element.make_clips()"
    WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
set_tests_properties(media.element_clips PROPERTIES FIXTURES_SETUP clips LABELS media
    ENVIRONMENT "${lEnvironment};${lElementEnvironment}" TIMEOUT 300)
