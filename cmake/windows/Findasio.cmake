# Asio without Boost, out of the host's packages: headers alone, the same for every target system.
include(${CMAKE_CURRENT_LIST_DIR}/header_only.cmake)
header_only(asio::asio asio asio.hpp)
set_target_properties(asio::asio PROPERTIES INTERFACE_LINK_LIBRARIES "ws2_32;mswsock"
                                            INTERFACE_COMPILE_DEFINITIONS ASIO_STANDALONE)
set(asio_FOUND TRUE)
