# One interface target carries the compile settings every target links.
add_library(kesta_settings INTERFACE)
target_compile_features(kesta_settings INTERFACE cxx_std_20)
target_compile_options(kesta_settings INTERFACE -Wall -Wextra -Wpedantic)
if(KESTA_WERROR)
  target_compile_options(kesta_settings INTERFACE -Werror)
endif()
if(KESTA_SANITIZE)
  target_compile_options(kesta_settings INTERFACE -fsanitize=${KESTA_SANITIZE} -fno-omit-frame-pointer
                                                  -fno-sanitize-recover=all)
  target_link_options(kesta_settings INTERFACE -fsanitize=${KESTA_SANITIZE})
endif()
