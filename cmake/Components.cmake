# The product's own code. cmake/components.txt lists its folders, one a line; scripts read the same list.
file(STRINGS ${CMAKE_SOURCE_DIR}/cmake/components.txt VISTREL_COMPONENTS)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/components.txt)

# vistrel_component(FOLDER): adds every source file below the folder to a library, by the file's name:
#
#     NAME_windows.cpp    calls Windows: vistrel_windows
#     any other .cpp      includes no Windows header: vistrel_portable, also built natively under sanitizers
#
# main_windows.cpp belongs to a program and to neither library.
function(vistrel_component folder)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/main(_windows)?\\.cpp$")
  set(windows_sources ${sources})
  list(FILTER windows_sources INCLUDE REGEX "_windows\\.cpp$")
  list(FILTER sources EXCLUDE REGEX "_windows\\.cpp$")
  target_sources(vistrel_portable PRIVATE ${sources})
  if(WIN32)
    target_sources(vistrel_windows PRIVATE ${windows_sources})
  endif()
endfunction()
