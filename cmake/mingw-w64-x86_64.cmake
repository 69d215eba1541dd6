# Cross build for 64-bit Windows with mingw-w64. Programs and libraries carry the whole run time with them.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(QKEL4X_WINDOWS_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
