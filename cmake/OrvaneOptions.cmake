# Compiler settings shared by every target of the project, as one interface target
# that targets link privately (never exported to users).
add_library(orvane_options INTERFACE)
target_compile_options(orvane_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual
  # Floating-point results must not depend on whether the compiler fuses a*b+c.
  -ffp-contract=off)
# GCC 12 reports impossible memcpy overlaps inside std::string's operator+ at -O2 and
# above (GCC bug 105651); the warning is fixed in GCC 13.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(orvane_options INTERFACE -Wno-restrict)
endif()
if(ORVANE_WERROR)
  target_compile_options(orvane_options INTERFACE -Werror)
endif()
if(ORVANE_SANITIZE)
  target_compile_options(orvane_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(orvane_options INTERFACE -fsanitize=address,undefined)
endif()
if(ORVANE_FUZZ)
  # Coverage for libFuzzer in every object; the fuzz targets add the fuzzer's main.
  target_compile_options(orvane_options INTERFACE
    -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(orvane_options INTERFACE -fsanitize=address,undefined)
endif()
