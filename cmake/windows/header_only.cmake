# header_only(TARGET NAME...): an imported target for headers under /usr/include, through a folder of links that
# holds these alone. /usr/include itself would bring the host's C library in.
include_guard()

function(link_headers)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/include)
  foreach(name ${ARGN})
    if(NOT EXISTS /usr/include/${name})
      message(FATAL_ERROR "/usr/include/${name} is missing: install what docs/windows.md lists")
    endif()
    file(CREATE_LINK /usr/include/${name} ${CMAKE_BINARY_DIR}/include/${name} SYMBOLIC)
  endforeach()
endfunction()

function(header_only target)
  link_headers(${ARGN})
  if(NOT TARGET ${target})
    add_library(${target} INTERFACE IMPORTED GLOBAL)
    target_include_directories(${target} SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/include)
  endif()
endfunction()
