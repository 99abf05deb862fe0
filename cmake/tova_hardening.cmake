# The hardening that a distribution expects of a shared object that reads text from outside: checked calls
# of the C library, stack canaries, stack probes, marked targets of indirect branches, and relocations that
# are resolved at load time and then read-only. tests/abi/hardening_test.py checks the result.
include(CheckCXXCompilerFlag)

# tova_harden(TARGET): adds the flags that the compiler supports.
function(tova_harden target)
  foreach(flag IN ITEMS stack-protector-strong stack-clash-protection cf-protection=full)
    string(MAKE_C_IDENTIFIER "TOVA_HAS_${flag}" known)
    check_cxx_compiler_flag(-f${flag} ${known})
    if(${known})
      target_compile_options(${target} PRIVATE -f${flag})
    endif()
  endforeach()
  # The checked calls need optimization, and the sanitizers check more.
  if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_compile_options(${target} PRIVATE
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  endif()

  target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now)
  # The linker omits the note if one object lacks it, and the start file of the C library does, because its
  # `_init` has no branch target. All our initializers are in .init_array, so `_init` is not registered and
  # the note is correct.
  if(TOVA_HAS_cf_protection_full AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_link_options(${target} PRIVATE -Wl,-z,ibt,-z,shstk,-init=0,-fini=0)
  endif()
endfunction()
