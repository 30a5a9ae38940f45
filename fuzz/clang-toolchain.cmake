# The compilers of the fuzz build: libFuzzer comes with clang.
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
