# The sanitizer build (scripts/test-sanitize.sh makes it in build-sanitize/): every target built
# with AddressSanitizer and UndefinedBehaviorSanitizer, the first report ends the process; with
# VD_FUZZ also the coverage that libFuzzer steers by, and the fuzz targets of tests/fuzz.
option(VD_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
option(VD_FUZZ "Also build the libFuzzer targets (clang only; implies VD_SANITIZE)" OFF)

if(VD_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "VD_FUZZ needs clang's libFuzzer: configure with -DCMAKE_CXX_COMPILER=clang++")
  endif()
  set(VD_SANITIZE ON)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(VD_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  # What every test runs with. Leaks are not looked for: Qt keeps some of its own allocations to
  # the end of the process on purpose, and its frames, built without frame pointers, cut the
  # stacks that would tell them from ours.
  set(VD_SANITIZER_ENVIRONMENT
      "ASAN_OPTIONS=detect_leaks=0:detect_stack_use_after_return=1:strict_init_order=1"
      "UBSAN_OPTIONS=print_stacktrace=1")
endif()
