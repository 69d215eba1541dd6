# CLI11 out of the host's packages: headers alone, the same for every target system.
include(${CMAKE_CURRENT_LIST_DIR}/header_only.cmake)
header_only(CLI11::CLI11 CLI)
set(CLI11_FOUND TRUE)
