# Functions for the CMakeLists.txt of the folders.

set(TOVA_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wconversion
  -Wno-sign-conversion)
# Operations with a published throw() keep that spelling, although newer standards deprecate it.
list(APPEND TOVA_WARNINGS -Wno-deprecated)

# tova_sources(a.cpp b.cpp ...): adds sources of the current folder to the shared object.
function(tova_sources)
  list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  target_sources(tova PRIVATE ${ARGN})
endfunction()

# tova_fills_strings(a.cpp ...): sources of the shared object that fill strings without clearing them
# first, which `std::string` supports since C++23. Other compilers build them as C++14 and clear the
# strings. Before version 15, clang treats `if consteval` in the standard library as true at run time, so
# each `replace` in the library would copy its string byte by byte.
function(tova_fills_strings)
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_FLAGS -std=c++2b)
  check_cxx_source_compiles("
    #include <string>
    #if defined(__clang__) && __clang_major__ < 15
    #error if consteval is true at run time
    #endif
    int main() { std::string s; s.resize_and_overwrite(1, [](char*, std::size_t) { return 0; }); }"
    TOVA_CAN_FILL_STRINGS)
  if(TOVA_CAN_FILL_STRINGS)
    set_source_files_properties(${ARGN} TARGET_DIRECTORY tova PROPERTIES COMPILE_OPTIONS -std=c++2b)
  endif()
endfunction()

# tova_add_test(NAME a_test.cpp ...): one GoogleTest program from sources of the current folder. Its
# tests run in random order. It is built as C++14; `tova_test_standard` changes that.
function(tova_add_test name)
  add_executable(${name} ${ARGN})
  set_target_properties(${name} PROPERTIES CXX_STANDARD 14)
  target_compile_options(${name} PRIVATE ${TOVA_WARNINGS} ${TOVA_TEST_OPTIMIZATION})
  if(TOVA_PRECOMPILE_TESTS)
    target_precompile_headers(${name} REUSE_FROM tova_test_support)
  endif()
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PRIVATE tova::tova tova_test_support GTest::gmock GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name} --gtest_shuffle --gtest_brief=1)
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()

# tova_test_standard(NAME STANDARD): another standard for a test program. The precompiled headers are
# those of C++14, so it does without them.
function(tova_test_standard name standard)
  set_target_properties(${name} PROPERTIES CXX_STANDARD ${standard} DISABLE_PRECOMPILE_HEADERS ON)
endfunction()

# tova_add_example_test(NAME): the test program NAME_example_test, from NAME_example_test.cpp in the
# current folder. It runs the program of examples/NAME, if the examples are built.
function(tova_add_example_test example)
  if(TARGET tova_example_${example})
    tova_add_test(${example}_example_test ${example}_example_test.cpp)
    target_compile_definitions(${example}_example_test PRIVATE
      TOVA_EXAMPLE_PROGRAM="$<TARGET_FILE:tova_example_${example}>")
    add_dependencies(${example}_example_test tova_example_${example})
  endif()
endfunction()

# tova_add_benchmark(NAME a.cpp ...): one Google Benchmark program.
function(tova_add_benchmark name)
  add_executable(${name} ${ARGN})
  set_target_properties(${name} PROPERTIES CXX_STANDARD 17)
  target_link_libraries(${name} PRIVATE tova::tova benchmark::benchmark_main)
endfunction()

# tova_add_fuzzer(fuzz_NAME NAME.cpp): one libFuzzer program. Its seeds are in fuzz/seeds/NAME and its
# dictionary, if it has one, is fuzz/NAME.dict. TOVA_FUZZ_SUPPORT lists the sources that all of them share.
function(tova_add_fuzzer name)
  add_executable(${name} ${ARGN} ${TOVA_FUZZ_SUPPORT})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src)
  set_target_properties(${name} PROPERTIES CXX_STANDARD 14)
  target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(${name} PRIVATE tova::tova)
endfunction()

# tova_add_form_library(NAME [FORM]): a copy of the shared object from the same object files, with the
# switch of src/detail/kernel_form.hpp. It uses the named form of the kernels from the start. Its file has
# the name of the library and is in the directory forms/FORM. A program that is linked to the library loads
# the copy if LD_LIBRARY_PATH names that directory.
function(tova_add_form_library name)
  get_property(switch GLOBAL PROPERTY TOVA_KERNEL_FORM_SWITCH)
  add_library(${name} SHARED ${switch} $<TARGET_OBJECTS:tova>)
  set(form ${ARGV1})
  set_target_properties(${name} PROPERTIES
    CXX_STANDARD 14
    OUTPUT_NAME tova
    VERSION ${PROJECT_VERSION}
    SOVERSION 2.18
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/forms/${form})
  if(form)
    target_compile_definitions(${name} PRIVATE TOVA_KERNEL_FORM="${form}")
  endif()
  target_compile_options(${name} PRIVATE ${TOVA_WARNINGS})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PRIVATE Boost::filesystem Boost::system)
  target_link_options(${name} PRIVATE -Wl,-Bsymbolic-functions
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/tova.map)
  # Without the run time of the profiles, the counters in the object files are never written.
  if(TOVA_COVERAGE)
    target_link_options(${name} PRIVATE -fprofile-instr-generate)
  endif()
endfunction()
