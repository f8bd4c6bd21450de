# Warnings for our own sources; they never reach users of the library.
option(VELA_WARNINGS_AS_ERRORS "Treat warnings in our own sources as errors" OFF)

function(vela_add_warnings target)
    target_compile_options(${target} PRIVATE
        $<$<COMPILE_LANGUAGE:CXX>:-Wall;-Wextra;-Wpedantic;-Wshadow;-Wconversion>
        $<$<COMPILE_LANGUAGE:CUDA>:-Xcompiler=-Wall,-Wextra,-Wshadow>)
    if(VELA_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE
            $<$<COMPILE_LANGUAGE:CXX>:-Werror>
            $<$<COMPILE_LANGUAGE:CUDA>:-Xcompiler=-Werror;-Werror=all-warnings>)
    endif()
endfunction()
