# tessarune_box(<target> [USES <target>...] [LIBRARIES <target>...])
#
# A box is one folder of sources that becomes one static library. USES names the boxes that it may
# include and link; the users of this box may do so too. LIBRARIES names foreign libraries that only
# its own sources see. scripts/check-layering checks every #include against these declarations.
function(tessarune_box target)
  cmake_parse_arguments(BOX "" "" "USES;LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp" "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
  if(target MATCHES "^(TessaruneCore|tessarune-terminal-box)$")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp" "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
  endif()
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$") # belongs to a program, not to the box
  if(NOT sources)
    add_library(${target} INTERFACE)
    target_link_libraries(${target} INTERFACE tessarune-options ${BOX_USES})
    return()
  endif()
  add_library(${target} STATIC ${sources})
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${TESSARUNE_UNITY} UNITY_BUILD_BATCH_SIZE 16)
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(${target} PUBLIC tessarune-options ${BOX_USES} PRIVATE ${BOX_LIBRARIES})
endfunction()

# tessarune_test(<target> LINKS <target>... [LABELS <label>...])
#
# One GoogleTest program from all sources of the current test folder and below.
function(tessarune_test target)
  cmake_parse_arguments(TEST "" "" "LINKS;LABELS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$") # belongs to a separate program
  if(NOT sources)
    return()
  endif()
  add_executable(${target} ${sources})
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${TESSARUNE_UNITY} UNITY_BUILD_BATCH_SIZE 12)
  target_link_libraries(${target} PRIVATE ${TEST_LINKS} GTest::gtest GTest::gtest_main)
  target_compile_definitions(${target} PRIVATE
    TESSARUNE_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data"
    TESSARUNE_BIN="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
  set(properties TIMEOUT 300)
  if(TEST_LABELS)
    list(APPEND properties LABELS "${TEST_LABELS}")
  endif()
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST PROPERTIES ${properties})
endfunction()

# tessarune_program(<target>)
#
# For a program that is installed. In a release build, moves the program's debug information to
# <target>.debug in the same folder, where debuggers look for it.
function(tessarune_program target)
  if(NOT CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo")
    return()
  endif()
  set(program "$<TARGET_FILE:${target}>")
  add_custom_command(TARGET ${target} POST_BUILD VERBATIM
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug "${program}" "${program}.debug"
    COMMAND ${CMAKE_OBJCOPY} --strip-debug "${program}"
    COMMAND ${CMAKE_COMMAND} -E chdir "$<TARGET_FILE_DIR:${target}>"
      ${CMAKE_OBJCOPY} "--add-gnu-debuglink=$<TARGET_FILE_NAME:${target}>.debug" "${program}")
endfunction()
