# tesk_visual_styles(TARGET): a program or DLL that shows the setup dialog carries the manifest of its look.
if(WIN32)
  enable_language(RC)
endif()

function(tesk_visual_styles target)
  if(WIN32)
    set(resource "${CMAKE_SOURCE_DIR}/platform/windows/VisualStyles.rc")
    target_sources(${target} PRIVATE "${resource}")
    set_source_files_properties("${resource}" TARGET_DIRECTORY ${target} PROPERTIES OBJECT_DEPENDS
                                "${CMAKE_SOURCE_DIR}/platform/windows/VisualStyles.manifest")
  endif()
endfunction()
