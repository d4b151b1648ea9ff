# What every target of the suite is compiled with: the language standard, the warnings, the strict
# spellings of the toolkit, and the sanitizers when a preset asks for them.

add_library(vandrel_common INTERFACE)
add_library(Vandrel::common ALIAS vandrel_common)

target_compile_features(vandrel_common INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)

target_compile_options(vandrel_common INTERFACE
    -Wall -Wextra -Wpedantic
    -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-qual -Wconversion -Wformat=2 -Wnull-dereference
    -Wimplicit-fallthrough -Wextra-semi
    $<$<BOOL:${VANDREL_WERROR}>:-Werror>
    # The optimiser of GCC 12 reports paths through the toolkit's inlined headers that cannot happen.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release,RelWithDebInfo>>:-Wno-null-dereference>
)

target_compile_definitions(vandrel_common INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_KEYWORDS
    QT_NO_FOREACH
    QT_STRICT_ITERATORS
    QT_DISABLE_DEPRECATED_BEFORE=0x060400
)

# What makes a mistake in what ships hard to exploit, as Debian builds its own programs, and two steps further:
# the stack cannot jump over its guard page, and indirect branches land where the compiler meant them to.
include(CheckPIESupported)
check_pie_supported()
target_compile_options(vandrel_common INTERFACE $<$<CONFIG:Release>:
    -fstack-protector-strong -fstack-clash-protection
    $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},x86_64>:-fcf-protection>
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
target_link_options(vandrel_common INTERFACE $<$<CONFIG:Release>:-Wl,-z,relro,-z,now,-z,noexecstack>)

# A debug build links some two hundred programs; where the fast linker is installed, it does that.
find_program(VANDREL_FAST_LINKER mold)
mark_as_advanced(VANDREL_FAST_LINKER)
if(VANDREL_FAST_LINKER)
    target_link_options(vandrel_common INTERFACE $<$<CONFIG:Debug>:-fuse-ld=mold>)
endif()

if(VANDREL_SANITIZE)
    target_compile_options(vandrel_common INTERFACE
        -fsanitize=${VANDREL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vandrel_common INTERFACE -fsanitize=${VANDREL_SANITIZE})
endif()
if(VANDREL_FUZZ)
    # Coverage for every object; only the fuzz targets themselves link the fuzzer's main.
    target_compile_options(vandrel_common INTERFACE -fsanitize=fuzzer-no-link)
endif()
