# vire_warnings(TARGET): the warnings that our own code is held to, and the sanitizers of the preset. They are errors in
# the presets, which set CMAKE_COMPILE_WARNING_AS_ERROR: another compiler than ours must not stop a user.
set(VIRE_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")

if(VIRE_SANITIZE)
    add_compile_options(-fsanitize=${VIRE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    # Reports name files and lines; the rest is a debugger's and costs time.
    add_compile_options($<$<CONFIG:Debug>:-g1>)
    # The standard library's own checks of indices, iterators and empty containers.
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
    add_link_options(-fsanitize=${VIRE_SANITIZE})
endif()

function(vire_warnings aTarget)
    target_compile_options(${aTarget} PRIVATE -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion
        -Wnon-virtual-dtor -Woverloaded-virtual)
endfunction()
