# Libraries that are not ours: CLI11, nlohmann-json, {fmt}, ncurses, GoogleTest and Google Benchmark, all from
# Debian. A native build takes the installed packages. A Windows build takes the header-only ones
# through links in the build folder (the host's /usr/include must not reach the cross compiler) and
# compiles GoogleTest from its packaged sources.

function(tesk_link_headers folder names)
  file(MAKE_DIRECTORY "${folder}")
  foreach(name IN LISTS names)
    if(NOT IS_DIRECTORY "/usr/include/${name}")
      message(FATAL_ERROR "/usr/include/${name} is missing: run ./setup.sh")
    endif()
    file(CREATE_LINK "/usr/include/${name}" "${folder}/${name}" SYMBOLIC)
  endforeach()
endfunction()

function(tesk_header_only name folder)
  add_library(${name} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${name} SYSTEM INTERFACE "${folder}")
endfunction()

# fmt's inline functions would otherwise differ between units of one program.
function(tesk_add_fmt)
  add_library(tesk_fmt INTERFACE)
  if(CMAKE_CROSSCOMPILING)
    target_link_libraries(tesk_fmt INTERFACE tesk_fmt_headers)
    target_compile_definitions(tesk_fmt INTERFACE FMT_HEADER_ONLY)
  else()
    target_link_libraries(tesk_fmt INTERFACE fmt::fmt)
  endif()
endfunction()

if(CMAKE_CROSSCOMPILING)
  set(headers "${CMAKE_BINARY_DIR}/third_party")
  tesk_link_headers("${headers}" "CLI;nlohmann;fmt")
  tesk_header_only(CLI11::CLI11 "${headers}")
  tesk_header_only(nlohmann_json::nlohmann_json "${headers}")
  tesk_header_only(tesk_fmt_headers "${headers}")
  set(INSTALL_GTEST OFF)
  set(BUILD_SHARED_LIBS OFF)
  # GoogleTest needs what strict ISO mode hides in the system headers.
  set(CMAKE_CXX_EXTENSIONS ON)
  add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
  set(CMAKE_CXX_EXTENSIONS OFF)
else()
  find_package(CLI11 REQUIRED)
  find_package(nlohmann_json REQUIRED)
  find_package(fmt REQUIRED)
  find_package(GTest REQUIRED)
  # The terminal library and its forms.
  foreach(name formw ncursesw)
    find_library(TESKREAD_${name} ${name} REQUIRED)
    list(APPEND TESKREAD_TERMINAL ${TESKREAD_${name}})
  endforeach()
endif()
tesk_add_fmt()
