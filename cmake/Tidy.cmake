# `cmake --build --preset linux --target tidy` runs clang-tidy over our sources.
find_program(TESKREAD_RUN_TIDY NAMES run-clang-tidy run-clang-tidy-14)
if(TESKREAD_RUN_TIDY)
  add_custom_target(
    tidy
    COMMAND "${TESKREAD_RUN_TIDY}" -quiet -p "${CMAKE_BINARY_DIR}"
            "^${CMAKE_SOURCE_DIR}/(base|profiles|transport|engine|drivers|setup|platform|assembly|cli|simulator)/"
    USES_TERMINAL VERBATIM)
endif()
