# One interface target carries the compile settings every target links.
add_library(kesta_settings INTERFACE)
target_compile_features(kesta_settings INTERFACE cxx_std_20)
target_compile_options(kesta_settings INTERFACE -Wall -Wextra -Wpedantic)
if(KESTA_WERROR)
  target_compile_options(kesta_settings INTERFACE -Werror)
endif()

# Every program is position independent, so the loader can place it anywhere.
include(CheckPIESupported)
check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(KESTA_SANITIZE)
  target_compile_options(kesta_settings INTERFACE -fsanitize=${KESTA_SANITIZE} -fno-omit-frame-pointer
                                                  -fno-sanitize-recover=all)
  target_link_options(kesta_settings INTERFACE -fsanitize=${KESTA_SANITIZE})
else()
  # The programs read question banks from strangers and write in folders every user shares: overflows of
  # the stack or of a known-size buffer end the program, and the relocations are read-only before main.
  # Checked buffer functions need the optimiser's object sizes, so only the optimised build types get them
  # (elsewhere they would only warn). The sanitizer builds find the same faults their own way.
  target_compile_options(kesta_settings INTERFACE -fstack-protector-strong
    "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  target_link_options(kesta_settings INTERFACE LINKER:-z,relro,-z,now)
endif()
