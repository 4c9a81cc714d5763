# What every target of the project is compiled with: warnings are errors in our own builds.
option(KVT_WERROR "Treat warnings as errors" ON)

add_library(kvt_options INTERFACE)
target_include_directories(kvt_options INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_options(kvt_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                             $<$<BOOL:${KVT_WERROR}>:-Werror>)
target_compile_definitions(kvt_options INTERFACE QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII)

if(KVT_SANITIZE)
  target_compile_options(kvt_options INTERFACE -fsanitize=${KVT_SANITIZE} -fno-omit-frame-pointer
                                               -fno-sanitize-recover=all)
  target_link_options(kvt_options INTERFACE -fsanitize=${KVT_SANITIZE})
endif()
