# What makes a fault of command or library harder to exploit. Not in sanitizer builds: these find the faults themselves.
#
# kesto_options carries it, so that all that is built has it; tests/package/check_binaries.py looks at what came of it.
include(CheckCXXSourceCompiles)

target_compile_options(kesto_options INTERFACE -fstack-protector-strong)

# Calls that overrun an array of known size end the process. Level 3, of gcc 12 and clang 9 on, also knows sizes that are
# computed. Some distributions define the macro themselves. It needs optimization, and of MinGW a library.
if(NOT WIN32)
    set(level 2)
    set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
    check_cxx_source_compiles("#include <cstdio>\nint main() {}" KESTO_HAS_FORTIFY_3)
    unset(CMAKE_REQUIRED_FLAGS)
    if(KESTO_HAS_FORTIFY_3)
        set(level 3)
    endif()
    # Sanitizers of single targets, as in fuzzing, do not see into the calls that are checked.
    set(fortified $<AND:$<CONFIG:Release,RelWithDebInfo,MinSizeRel>,$<NOT:$<BOOL:$<TARGET_PROPERTY:KESTO_SANITIZED>>>>)
    target_compile_options(kesto_options INTERFACE
        $<${fortified}:-U_FORTIFY_SOURCE> $<${fortified}:-D_FORTIFY_SOURCE=${level}>)
endif()

if(WIN32)
    # The stack protector is a library here, which goes into the file with the compiler's others. Then a base address that
    # differs in each process, and data that is no code.
    target_link_options(kesto_options INTERFACE -fstack-protector-strong)
    target_link_options(kesto_options INTERFACE -Wl,--dynamicbase,--high-entropy-va,--nxcompat)
else()
    # All addresses of functions are looked up at the start and are read-only from then on; no stack is code.
    target_link_options(kesto_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
    # Code of a program may stand anywhere, as that of a library.
    target_compile_options(kesto_options INTERFACE $<$<NOT:$<BOOL:$<TARGET_PROPERTY:POSITION_INDEPENDENT_CODE>>>:-fPIE>)
    target_link_options(kesto_options INTERFACE $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
endif()
