# The Windows component under Wine: a cross build, one prefix with one server, the clients, the end of the server.
find_program(QKEL4X_WINE wine REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(cross ${CMAKE_BINARY_DIR}/windows)
set(clients ${cross}/bin)
set(under_wine ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/under_wine.py ${CMAKE_BINARY_DIR}/wine)
set(scripts ${CMAKE_CURRENT_SOURCE_DIR}/scripts)
set(examples ${CMAKE_CURRENT_SOURCE_DIR}/../examples)

add_executable(serve_instrument serve_instrument.cpp)
target_link_libraries(serve_instrument PRIVATE qkel4x_simulator)

add_test(NAME windows_configure
         COMMAND ${CMAKE_COMMAND} -S ${PROJECT_SOURCE_DIR} -B ${cross} -G Ninja --toolchain
                 ${PROJECT_SOURCE_DIR}/cmake/mingw-w64-x86_64.cmake -DCMAKE_BUILD_TYPE=Release
                 -DCMAKE_CXX_FLAGS_RELEASE=-O1 -DQKEL4X_TESTS=OFF
                 -DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER})
add_test(NAME windows_build COMMAND ${CMAKE_COMMAND} --build ${cross})
add_test(NAME windows_start COMMAND ${under_wine} start ${clients})
add_test(NAME windows_stop COMMAND ${under_wine} stop)
set_tests_properties(windows_configure PROPERTIES FIXTURES_SETUP windows_configured)
set_tests_properties(windows_build PROPERTIES FIXTURES_SETUP windows_built FIXTURES_REQUIRED windows_configured
                                              TIMEOUT 900 PROCESSORS 2)
set_tests_properties(windows_start PROPERTIES FIXTURES_SETUP wine FIXTURES_REQUIRED windows_built)
set_tests_properties(windows_stop PROPERTIES FIXTURES_CLEANUP wine)

function(add_wine_test name)
  add_test(NAME windows_${name} COMMAND ${under_wine} ${ARGN})
  set_tests_properties(windows_${name} PROPERTIES FIXTURES_REQUIRED wine TIMEOUT 120)
endfunction()

set(with_instrument --instrument $<TARGET_FILE:serve_instrument>)
add_wine_test(registration fresh ${clients})
add_wine_test(members_late_bound run ${clients}/component_cases.exe late ${PROJECT_SOURCE_DIR}/tests/cases)
add_wine_test(members_early_bound run ${clients}/component_cases.exe early ${PROJECT_SOURCE_DIR}/tests/cases)
add_wine_test(early_bound_client run ${clients}/component_client.exe early)
add_wine_test(client_in_another_apartment run ${clients}/component_client.exe apartment)
add_wine_test(type_library run ${clients}/component_client.exe library ${clients}/QKEL4x.dll)
add_wine_test(without_registry run ${clients}/component_client.exe without-registry ${clients}/QKEL4x.dll)
foreach(language vbs js)
  add_wine_test(${language}_front_panel script ${scripts}/members.${language} GUI)
  add_wine_test(${language}_tcp ${with_instrument} script ${scripts}/members.${language} QPort.clsEthernet
                TCP/IP.Port PORT)
  add_wine_test(${language}_com_port ${with_instrument} script ${scripts}/members.${language} QPort.clsComm
                "RS232.Comm Port" COM8)
  # One serial line serves one client.
  set_tests_properties(windows_${language}_com_port PROPERTIES RESOURCE_LOCK windows_com8)
endforeach()
add_wine_test(example_early_bound ${with_instrument} run ${clients}/early_bound.exe 127.0.0.1 PORT)
set_tests_properties(windows_example_early_bound PROPERTIES PASS_REGULAR_EXPRESSION "level -[0-9.]+ dBm, MER [0-9.]+ dB"
                                                          FAIL_REGULAR_EXPRESSION "ended with")
add_wine_test(trace_of_a_host ${with_instrument} trace ${clients}/early_bound.exe 127.0.0.1 PORT)
set(tcp TCPIP::127.0.0.1::PORT::SOCKET)
add_wine_test(tool_get ${with_instrument} run ${clients}/kel4x.exe --resource ${tcp} get Identity)
set_tests_properties(windows_tool_get PROPERTIES PASS_REGULAR_EXPRESSION "HALVERN&TOSKE,KEL 40,"
                                               FAIL_REGULAR_EXPRESSION "ended with")
add_wine_test(tool_screen_shot ${with_instrument} picture ${clients}/kel4x.exe --resource ${tcp} screenshot)
add_wine_test(example_mer_and_echo ${with_instrument} script ${examples}/mer_and_echo.vbs 127.0.0.1 PORT)
set_tests_properties(windows_example_mer_and_echo PROPERTIES PASS_REGULAR_EXPRESSION "MER [0-9.]+ dB.*echo 10: "
                                                           FAIL_REGULAR_EXPRESSION "ended with")
add_wine_test(failing_script_fails script ${scripts}/fails.vbs)
set_tests_properties(windows_failing_script_fails PROPERTIES PASS_REGULAR_EXPRESSION "it failed")
add_test(NAME windows_examples_in_docs COMMAND ${Python3_EXECUTABLE}
                                               ${CMAKE_CURRENT_SOURCE_DIR}/examples_in_docs.py)
