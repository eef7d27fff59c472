# tessarune_qml(<box> <name>)
#
# Adds the QML files of <name>.qrc, also as byte code, so that the program need not parse them at
# its start. Qt finds both after the box has called Q_INIT_RESOURCE for <name> and qmlcache_<name>.
function(tessarune_qml target name)
  set_target_properties(${target} PROPERTIES AUTOMOC ON AUTORCC ON)
  target_sources(${target} PRIVATE ${name}.qrc)
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/qmlcache")
  file(MAKE_DIRECTORY "${folder}")
  file(GLOB files CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/qml/*.qml")
  set(resource "--resource=${CMAKE_CURRENT_SOURCE_DIR}/${name}.qrc")
  set(paths "")
  set(includes "")
  set(commands "")
  foreach(file ${files})
    get_filename_component(base "${file}" NAME_WE)
    string(APPEND paths "/${name}/${base}.qml\n")
    string(APPEND includes "#include \"${base}.cpp\"\n")
    list(APPEND commands COMMAND Qt6::qmlcachegen --bare --only-bytecode ${resource}
      --resource-path "/${name}/${base}.qml" -o "${folder}/${base}.cpp" "${file}")
  endforeach()
  set(loader "${name}_qmlcache_loader.cpp") # qmlcachegen recognises a loader by this suffix
  file(CONFIGURE OUTPUT "${folder}/paths.rsp" CONTENT "${paths}")
  file(CONFIGURE OUTPUT "${folder}/${name}.cpp" CONTENT "${includes}#include \"${loader}\"\n")
  add_custom_command(OUTPUT "${folder}/${loader}" ${commands}
    COMMAND Qt6::qmlcachegen ${resource} --resource-name qmlcache_${name}
      -o "${folder}/${loader}" "@${folder}/paths.rsp"
    DEPENDS ${files} ${name}.qrc
    COMMENT "Compiling the QML files of ${target}" VERBATIM)
  target_sources(${target} PRIVATE "${folder}/${name}.cpp")
  # No warnings, because the code is generated.
  set_source_files_properties("${folder}/${name}.cpp" PROPERTIES
    OBJECT_DEPENDS "${folder}/${loader}" COMPILE_OPTIONS -w SKIP_AUTOGEN ON)
endfunction()
