# velmora_test(name SOURCES … LIBRARIES … [DESKTOP options…])
#
# One test program. With DESKTOP it runs inside tests/support/desktop with these options (a private
# display, private buses); otherwise on the offscreen platform with no bus at all.
function(velmora_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;DESKTOP" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE Qt6::Test ${ARG_LIBRARIES})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  if(DEFINED ARG_DESKTOP)
    add_test(NAME ${name} COMMAND ${PROJECT_SOURCE_DIR}/tests/support/desktop ${ARG_DESKTOP}
                                  -- $<TARGET_FILE:${name}>)
  else()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
      ENVIRONMENT "QT_QPA_PLATFORM=offscreen;DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent")
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()
