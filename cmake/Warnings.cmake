# One set of warnings for everything that is compiled here; a warning fails the build.
add_library(warnings INTERFACE)
if(MSVC)
    target_compile_options(warnings INTERFACE /W4 /WX /permissive-)
else()
    target_compile_options(warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
        # Extensions that Visual C++ does not have.
        target_compile_options(warnings INTERFACE -Wgnu -Wlanguage-extension-token)
    endif()
endif()
