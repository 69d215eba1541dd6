# The warnings that every target of this project is built with, and the sanitizers where asked for.
# Third-party headers come in as SYSTEM includes and are exempt.
add_compile_options(-Wall -Wextra -Wconversion -Wshadow -Werror)
if(QKEL4X_SANITIZE)
  add_compile_options(-fsanitize=${QKEL4X_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QKEL4X_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 takes paths that only the sanitizers' own checks make for the program's.
    add_compile_options(-Wno-maybe-uninitialized -Wno-stringop-overflow)
  endif()
  if(QKEL4X_SANITIZE MATCHES "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-tsan)  # Asio's fences, which this sanitizer does not follow
  endif()
endif()
if(QKEL4X_FUZZ)
  set(fuzz_sanitizers -fsanitize=fuzzer-no-link,address,undefined)
  add_compile_options(${fuzz_sanitizers} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()
