# Compiler flags. They decide the numbers, so they live here and not in a preset; primitives/tiers.h checks them again.

# Everything that is ours.
add_library(noxcv_flags INTERFACE)
target_compile_options(noxcv_flags INTERFACE
  # A float operation rounds once to float, a double operation once to double, and nothing is fused.
  -msse2 -mfpmath=sse -ffp-contract=off
  # These two change no value; they let loops with roots and comparisons become vector code.
  -fno-math-errno -fno-trapping-math
  -Wall -Wextra
  # clang reports each pixel pointer that is passed as a plain one. Kernels take plain pointers and view them as elements of
  # alignment 1 themselves; that they do is for the sanitizer to tell, which looks at accesses and not at types.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-align-mismatch -Wno-unknown-pragmas -Wno-bitwise-instead-of-logical>
  $<$<BOOL:${NOXCV_WERROR}>:-Werror>)
target_compile_definitions(noxcv_flags INTERFACE $<$<BOOL:${NOXCV_BASELINE}>:NOXCV_BASELINE>)
if(NOXCV_SANITIZE)
  # The instrumentation makes the compiler lose track of what the standard library has initialised.
  target_compile_options(noxcv_flags INTERFACE -fsanitize=address -fno-omit-frame-pointer -Wno-maybe-uninitialized)
  target_link_options(noxcv_flags INTERFACE -fsanitize=address,undefined)
endif()

# The two shared libraries.
add_library(noxcv_library_flags INTERFACE)
target_compile_options(noxcv_library_flags INTERFACE
  -fno-semantic-interposition -fno-exceptions -fno-rtti
  $<$<BOOL:${NOXCV_TUNE}>:-mtune=${NOXCV_TUNE}>
  # Old callers keep the stack aligned to 4 bytes only. Said in both ways: with the first alone, the compiler would not
  # inline plain functions into those of the wide tier.
  $<$<EQUAL:${NOXCV_BITS},32>:-mstackrealign>
  $<$<AND:$<EQUAL:${NOXCV_BITS},32>,$<CXX_COMPILER_ID:GNU>>:-mincoming-stack-boundary=2>)
target_link_options(noxcv_library_flags INTERFACE -Wl,-Bsymbolic-functions
  # Addresses are settled when the library is loaded and the tables that hold them are read-only from then on.
  -Wl,-z,relro,-z,now
  # The runtime's threads outlive a call: a program that closes the library must not take their code away.
  -Wl,-z,nodelete
  # What little the compiler's own runtime adds becomes part of the libraries.
  -static-libgcc -static-libstdc++)
if(NOXCV_SANITIZE)
  # Alignment, too: pixels may lie at any address, and kernels must say so. The debug information is for tools/check-abi,
  # which reads the types of arguments from this build.
  target_compile_options(noxcv_library_flags INTERFACE -g -fsanitize=undefined -fno-sanitize-recover=all)
endif()
if(NOT NOXCV_SANITIZE)
  target_link_options(noxcv_library_flags INTERFACE -Wl,-z,defs)
endif()
