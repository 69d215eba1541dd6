# nlohmann-json out of the host's packages: headers alone, the same for every target system.
include(${CMAKE_CURRENT_LIST_DIR}/header_only.cmake)
header_only(nlohmann_json::nlohmann_json nlohmann)
set(nlohmann_json_FOUND TRUE)
