find_package(GTest REQUIRED)

# vire_element_tests(LEG TARGET): the tests of the element, the same for both legs but for what gst1/ and
# gst010/ hold.
function(vire_element_tests aLeg aTarget)
    set(lFolder gst1)
    if(aLeg STREQUAL "0.10")
        set(lFolder gst010)
    endif()
    set(lHere ${PROJECT_SOURCE_DIR}/GStreamer/tests)
    file(GLOB_RECURSE lSources CONFIGURE_DEPENDS ${lHere}/${lFolder}/*.cpp)
    foreach(lRoom . support units fake scripted pipelines)
        file(GLOB lRoomSources CONFIGURE_DEPENDS ${lHere}/${lRoom}/*.cpp)
        list(APPEND lSources ${lRoomSources})
    endforeach()
    set(lEnvironment)
    if(VIRE_SANITIZE)
        # Memory from GLib's own pools would seem to be shared by its old and new users, and never to leak.
        set(lEnvironment ENVIRONMENT G_SLICE=always-malloc)
    endif()
    if(NOT VIRE_SANITIZE MATCHES "thread")
        list(FILTER lSources EXCLUDE REGEX "ThreadSanitizerLocks")
    endif()
    # The shorthand of dialogues, which the session's tests have as well.
    list(APPEND lSources ${PROJECT_SOURCE_DIR}/Player/tests/MediaSessions/Dialogue.cpp)
    # The heap that runs out at will.
    list(APPEND lSources ${PROJECT_SOURCE_DIR}/tests/faults/Memory.cpp)
    set(lPluginFile ${CMAKE_CURRENT_BINARY_DIR}/PluginFile-${aLeg}.cpp)
    file(GENERATE OUTPUT ${lPluginFile} CONTENT "#include \"support/PluginFile.hpp\"
const char* const ElementTest::kPluginFile = \"$<TARGET_FILE:${aTarget}-plugin>\";
")
    list(APPEND lSources ${lPluginFile})
    set(lTests element_tests_${aLeg})
    add_executable(${lTests} ${lSources})
    target_include_directories(${lTests} PRIVATE ${lHere} ${lHere}/${lFolder} ${PROJECT_SOURCE_DIR}/Player/tests
        ${PROJECT_SOURCE_DIR}/tests/faults)
    target_link_libraries(${lTests} PRIVATE ${aTarget} test_support GTest::gmock GTest::gtest)
    # Its sleeps can be made short: `usleep` in the element becomes `__wrap_usleep` of the tests. Its timers can be put
    # off, and the threads of its tasks be made late.
    foreach(lCall usleep gst_clock_get_time gst_clock_new_single_shot_id gst_task_new)
        target_link_options(${lTests} PRIVATE LINKER:--wrap=${lCall})
    endforeach()
    add_dependencies(${lTests} ${aTarget}-plugin)
    vire_warnings(${lTests})
    vire_precompile(${lTests} <gst/gst.h>)
    vire_tests(${lTests} PREFIX ${aLeg}. EXCEPT *Slow.*:*Long.* SHARDS 4 ${lEnvironment})
    # They wait for the element's own seconds: more of them than there are processors may run at once.
    vire_tests(${lTests} PREFIX ${aLeg}. ONLY *Slow.* LABEL slow SHARDS 8 ${lEnvironment})
    vire_tests(${lTests} PREFIX ${aLeg}. ONLY *Long.* LABEL long TIMEOUT 600 SHARDS 2 ${lEnvironment})
endfunction()
