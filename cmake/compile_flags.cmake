# Flags of everything that is compiled here: warnings, hardening, no paths of the build machine, and
# the sanitizers of a preset. All of them are settings of this directory: a host project keeps its own.
add_compile_options(-Wall -Wextra)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  add_compile_options(-Wno-format-truncation) # texts are cut to the size of their member on purpose
endif()
if(CLUTTERCLASSIFIER_WERROR)
  add_compile_options(-Werror)
endif()

# Debug information, assertions and coverage name files relative to the sources. A debug build keeps
# the full names, which a debugger opens.
add_compile_options(
  "$<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=;-ffile-prefix-map=${PROJECT_BINARY_DIR}=.>")

# Stack protection and immediate binding cost nothing that can be measured; the checked C functions
# need an optimised build and would hide faults from sanitizers.
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX)
if(CMAKE_SYSTEM_NAME STREQUAL Linux)
  add_compile_options(-fstack-protector-strong)
  add_link_options(-Wl,-z,relro -Wl,-z,now)
elseif(EMSCRIPTEN)
  # Exceptions are the language of scan/. Everyone's processor has the vector instructions.
  add_compile_options(-fexceptions -msimd128)
  add_link_options(-fexceptions)
  # Debian's tools for JavaScript lie there, and not every node looks for them.
  set(CMAKE_CXX_LINKER_LAUNCHER ${CMAKE_COMMAND} -E env NODE_PATH=/usr/share/nodejs)
endif()
if(CLUTTERCLASSIFIER_SANITIZE)
  add_compile_options(-fsanitize=${CLUTTERCLASSIFIER_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${CLUTTERCLASSIFIER_SANITIZE})
else()
  add_compile_options(
    "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endif()

# For code whose own speed does not matter: it compiles faster. A debug build keeps its level.
set(CLUTTERCLASSIFIER_QUICK_TO_COMPILE $<$<NOT:$<CONFIG:Debug>>:-O1>)
