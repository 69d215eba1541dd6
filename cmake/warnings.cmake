# The warnings that every target of this project is built with, and the sanitizers where asked for.
# Third-party headers come in as SYSTEM includes and are exempt.
add_compile_options(-Wall -Wextra -Wconversion -Wshadow -Werror)
if(QKEL4X_SANITIZE)
  add_compile_options(-fsanitize=${QKEL4X_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QKEL4X_SANITIZE})
  if(QKEL4X_SANITIZE MATCHES "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-tsan)  # Asio's fences, which this sanitizer does not follow
  endif()
endif()
