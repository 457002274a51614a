# Compiler settings shared by every target of the project.

# Results must match reference values bit for bit from one build to the next: no fused
# multiply-add contraction, never fast-math.
add_compile_options(-ffp-contract=off)

if(QV5_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()

if(QV5_TSAN)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "QV5_TSAN needs clang")
    endif()
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
endif()

if(QV5_BUILD_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "QV5_BUILD_FUZZ needs clang (libFuzzer)")
    endif()
    # Coverage instrumentation everywhere, so the fuzzers are guided by the library's branches.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

function(qv5_set_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wfloat-conversion -Wnon-virtual-dtor)
    if(QV5_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
