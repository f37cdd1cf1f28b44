# Compiler settings. What every target needs is set for the folder tree; what holds for our own code
# alone (warnings, the system's headers) travels with the target tesk_options.
find_program(TESKREAD_CCACHE ccache)
if(TESKREAD_CCACHE)
  # The cache takes files with precompiled headers only when told to.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${TESKREAD_CCACHE}")
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fpch-preprocess>)
endif()

if(TESKREAD_SANITIZE)
  add_compile_options(-Og -g1 -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

find_program(TESKREAD_MOLD mold)
if(TESKREAD_MOLD AND NOT WIN32)
  add_link_options(-fuse-ld=mold)
endif()

# An exported program must run where no run-time library of the compiler is installed.
if(WIN32)
  add_link_options(-static -static-libgcc -static-libstdc++)
endif()

set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
find_package(Threads REQUIRED)

add_library(tesk_options INTERFACE)
target_include_directories(tesk_options INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_options(tesk_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
# This compiler takes an empty std::optional for one that is used; the sanitizers see the real cases.
target_compile_options(tesk_options INTERFACE -Wno-maybe-uninitialized)
target_compile_definitions(tesk_options INTERFACE TESKREAD_VERSION="${PROJECT_VERSION}")
target_link_libraries(tesk_options INTERFACE Threads::Threads)
if(WIN32)
  target_compile_definitions(tesk_options INTERFACE UNICODE _UNICODE NOMINMAX _WIN32_WINNT=0x0601)
endif()
