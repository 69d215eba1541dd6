# toml++ out of the host's packages: headers alone, the same for every target system.
include(${CMAKE_CURRENT_LIST_DIR}/header_only.cmake)
header_only(tomlplusplus::tomlplusplus toml++)
set(tomlplusplus_FOUND TRUE)
