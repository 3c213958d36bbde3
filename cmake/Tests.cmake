include(GoogleTest)

set(VIRE_LEFT_OUT "" CACHE STRING "Tests that can't be run here, for example Socket.A:Wait.B")

option(VIRE_PRECOMPILE "Precompile what most tests include: less time from nothing, fewer hits in a compiler's cache" OFF)

# vire_precompile(TARGET [HEADER...]): the test framework, the standard headers that come with it, and HEADERs.
function(vire_precompile aTarget)
    if(NOT VIRE_PRECOMPILE)
        return()
    endif()
    target_precompile_headers(${aTarget} PRIVATE <gmock/gmock.h> <gtest/gtest.h> <algorithm> <atomic> <chrono>
        <condition_variable> <functional> <map> <memory> <mutex> <string> <thread> <vector> ${ARGN})
    # ccache looks into what gcc has preprocessed.
    target_compile_options(${aTarget} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endfunction()

# vire_tests(TARGET [PREFIX text] [ONLY filter] [EXCEPT filter] [LABEL label] [TIMEOUT seconds] [SHARDS count]
#            [ENVIRONMENT setting...])
# Each test is one of ctest's, to be picked with -R. A few processes that share them all run in a fraction of the time:
# `ctest -C Shared -LE '^each$'` takes those instead. Under sanitizers and emulation, where a process takes a second to
# start, there is no other way. Labelled tests, few and long, are always single ones elsewhere.
function(vire_tests aTarget)
    cmake_parse_arguments(l "" "PREFIX;ONLY;EXCEPT;LABEL;TIMEOUT;SHARDS" "ENVIRONMENT" ${ARGN})
    foreach(lDefault ONLY=* TIMEOUT=120 SHARDS=1)
        string(REPLACE "=" ";" lDefault ${lDefault})
        list(GET lDefault 0 lName)
        list(GET lDefault 1 lValue)
        if(NOT DEFINED l_${lName})
            set(l_${lName} ${lValue})
        endif()
    endforeach()
    set(lFilter "${l_ONLY}-${l_EXCEPT}:${VIRE_LEFT_OUT}")
    if(NOT VIRE_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
        set(lLabel ${l_LABEL})
        if(NOT lLabel)
            set(lLabel each)
        endif()
        gtest_discover_tests(${aTarget} TEST_PREFIX "${l_PREFIX}" DISCOVERY_TIMEOUT 60 TEST_FILTER "${lFilter}"
            PROPERTIES TIMEOUT ${l_TIMEOUT} LABELS "${lLabel}")
        if(l_LABEL)
            return()
        endif()
        set(lConfigurations CONFIGURATIONS Shared)
    endif()
    math(EXPR lLast "${l_SHARDS} - 1")
    foreach(lShard RANGE ${lLast})
        set(lTest ${l_PREFIX}${aTarget}.${l_LABEL}${lShard})
        add_test(NAME ${lTest} ${lConfigurations} COMMAND ${aTarget} --gtest_filter=${lFilter} --gtest_brief=1)
        set_tests_properties(${lTest} PROPERTIES TIMEOUT 900 LABELS "${l_LABEL}"
            ENVIRONMENT "GTEST_TOTAL_SHARDS=${l_SHARDS};GTEST_SHARD_INDEX=${lShard};${l_ENVIRONMENT}")
    endforeach()
endfunction()
