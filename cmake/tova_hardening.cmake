# What a distribution expects of a shared object that reads text from outside: checked calls of the C
# library, canaries, probed stack pages, marked targets of indirect branches, and read-only relocations
# that are resolved at load time. tests/abi/hardening_test.py reads the result.
include(CheckCXXCompilerFlag)

# tova_harden(TARGET): adds the flags that the compiler knows.
function(tova_harden target)
  foreach(flag IN ITEMS stack-protector-strong stack-clash-protection cf-protection=full)
    string(MAKE_C_IDENTIFIER "TOVA_HAS_${flag}" known)
    check_cxx_compiler_flag(-f${flag} ${known})
    if(${known})
      target_compile_options(${target} PRIVATE -f${flag})
    endif()
  endforeach()
  # The checked calls need an optimiser, and the sanitizers check more.
  if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_compile_options(${target} PRIVATE
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  endif()

  target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now)
  # The linker leaves the note out when one object lacks it, and the start file of the C library does:
  # its `_init` has no branch target. All our initialisers are in .init_array, so `_init` isn't
  # registered and the note is true.
  if(TOVA_HAS_cf_protection_full AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_link_options(${target} PRIVATE -Wl,-z,ibt,-z,shstk,-init=0,-fini=0)
  endif()
endfunction()
