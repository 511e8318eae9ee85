# One INTERFACE target that every Valtrona target links: language level,
# warnings and the Qt safety defines.
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)

include(GNUInstallDirs)

add_library(valtrona_config INTERFACE)
add_library(Valtrona::config ALIAS valtrona_config)

target_compile_features(valtrona_config INTERFACE cxx_std_20)
target_compile_options(valtrona_config INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align
    -Woverloaded-virtual -Wimplicit-fallthrough)
if(VALTRONA_WERROR)
    target_compile_options(valtrona_config INTERFACE -Werror)
endif()

# glib (pulled in by libvips) defines names that clash with Qt's keywords,
# so the project uses Q_SIGNALS / Q_SLOTS / Q_EMIT throughout.
target_compile_definitions(valtrona_config INTERFACE
    QT_NO_KEYWORDS
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CONTEXTLESS_CONNECT
    QT_NO_FOREACH
    QT_USE_QSTRINGBUILDER)

# The fuzz build instruments the libraries too, so the sanitizers see them.
if(VALTRONA_SANITIZE OR VALTRONA_FUZZ)
    target_compile_options(valtrona_config INTERFACE
        -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    if(VALTRONA_FUZZ)
        target_compile_options(valtrona_config INTERFACE -fsanitize=fuzzer-no-link)
    endif()
    target_link_options(valtrona_config INTERFACE -fsanitize=address,undefined)
endif()
