# Targets that read the code instead of building it. all_qmllint comes from qt_add_qml_module.
file(GLOB_RECURSE VELMORA_FORMATTED CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/src/*.cpp ${PROJECT_SOURCE_DIR}/src/*.h
     ${PROJECT_SOURCE_DIR}/tests/*.cpp ${PROJECT_SOURCE_DIR}/tests/*.h
     ${PROJECT_SOURCE_DIR}/bench/*.cpp ${PROJECT_SOURCE_DIR}/bench/*.h)

find_program(CLANG_FORMAT clang-format)
if(CLANG_FORMAT)
  add_custom_target(format
    COMMAND ${CLANG_FORMAT} -i ${VELMORA_FORMATTED}
    COMMENT "Formatting the C++ sources")
  add_custom_target(check-format
    COMMAND ${CLANG_FORMAT} --dry-run -Werror ${VELMORA_FORMATTED}
    COMMENT "Checking the format of the C++ sources")
endif()

# Of joined sources it looks at the joints, which is several times faster: most of its time goes to Qt's headers.
find_program(RUN_CLANG_TIDY NAMES run-clang-tidy run-clang-tidy-14)
if(RUN_CLANG_TIDY)
  set(tidied "^(${CMAKE_BINARY_DIR}/src/.*/Unity/|${PROJECT_SOURCE_DIR}/src/)")
  add_custom_target(tidy
    COMMAND ${RUN_CLANG_TIDY} -quiet -p ${CMAKE_BINARY_DIR} -checks=-bugprone-suspicious-include "${tidied}"
    COMMENT "clang-tidy on src"
    USES_TERMINAL VERBATIM)
  if(TARGET velmora_eds) # no part of the program: what is made for it has not been made by then
    add_dependencies(tidy velmora_eds)
  endif()
endif()
