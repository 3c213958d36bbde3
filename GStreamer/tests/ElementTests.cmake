find_package(GTest REQUIRED)
include(GoogleTest)

# vire_element_tests(LEG TARGET): the tests of the element, the same for both legs but for what gst1/ and
# gst010/ hold.
function(vire_element_tests aLeg aTarget)
    set(lFolder gst1)
    if(aLeg STREQUAL "0.10")
        set(lFolder gst010)
    endif()
    set(lHere ${PROJECT_SOURCE_DIR}/GStreamer/tests)
    file(GLOB lSources CONFIGURE_DEPENDS ${lHere}/*.cpp ${lHere}/support/*.cpp ${lHere}/${lFolder}/*.cpp)
    # The shorthand of dialogues, which the session's tests have as well.
    list(APPEND lSources ${PROJECT_SOURCE_DIR}/Player/tests/MediaSessions/Dialogue.cpp)
    set(lTests element_tests_${aLeg})
    add_executable(${lTests} ${lSources})
    target_include_directories(${lTests} PRIVATE ${lHere} ${lHere}/${lFolder} ${PROJECT_SOURCE_DIR}/Player/tests)
    target_link_libraries(${lTests} PRIVATE ${aTarget} test_support GTest::gmock GTest::gtest)
    target_compile_definitions(${lTests} PRIVATE VIRE_PLUGIN_FILE="$<TARGET_FILE:${aTarget}-plugin>")
    add_dependencies(${lTests} ${aTarget}-plugin)
    vire_warnings(${lTests})
    gtest_discover_tests(${lTests} TEST_PREFIX ${aLeg}. DISCOVERY_TIMEOUT 60 TEST_FILTER -*Slow.*
        PROPERTIES TIMEOUT 120)
    # They wait for the element's own seconds: more of them than there are processors may run at once.
    gtest_discover_tests(${lTests} TEST_PREFIX ${aLeg}. DISCOVERY_TIMEOUT 60 TEST_FILTER *Slow.*
        PROPERTIES TIMEOUT 120 LABELS slow)
endfunction()
