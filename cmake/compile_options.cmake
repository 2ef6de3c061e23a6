# What every target of the project is compiled and linked with: the include root, warnings,
# hardening, sanitizers, clang-tidy; and the runtime of what is installed.

add_library(sonaprobe_options INTERFACE)
target_include_directories(sonaprobe_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
# -Wno-format-y2k: a raw file's default name has a year of two digits.
target_compile_options(
  sonaprobe_options
  INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual
            -Wformat=2 -Wno-format-y2k -Wundef -Wnon-virtual-dtor -Wold-style-cast -Wunused)
if(SONAPROBE_WERROR)
  target_compile_options(sonaprobe_options INTERFACE -Werror)
endif()

# The registers of old 32-bit processors hold more than a double: times would come out otherwise.
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "86")
  add_compile_options(-msse2 -mfpmath=sse)
endif()

# What users run is hardened. The sanitizers check more, and do not go with fortify.
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX)
set(SONAPROBE_HARDENED OFF)
if(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo)$" AND NOT SONAPROBE_SANITIZE)
  set(SONAPROBE_HARDENED ON)
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong)
  add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
endif()

# Releases of what is installed carry their C++ runtime, where this machine has it to be linked in:
# to load it took half of a start's time.
add_library(sonaprobe_own_runtime INTERFACE)
if(SONAPROBE_HARDENED)
  include(CheckLinkerFlag)
  check_linker_flag(CXX "-static-libstdc++;-static-libgcc" SONAPROBE_LINKS_RUNTIME)
  if(SONAPROBE_LINKS_RUNTIME)
    target_link_options(sonaprobe_own_runtime INTERFACE -static-libstdc++ -static-libgcc)
  endif()
endif()

if(SONAPROBE_SANITIZE)
  add_compile_options(-fsanitize=${SONAPROBE_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${SONAPROBE_SANITIZE})
endif()

if(SONAPROBE_FUZZ)
  # To look at each comparison, those of the sanitizers too, took more than half of the time.
  add_compile_options(-fsanitize=fuzzer-no-link -fno-sanitize-coverage=trace-cmp)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()

if(SONAPROBE_TIDY)
  find_program(SONAPROBE_CLANG_TIDY NAMES clang-tidy-14 clang-tidy REQUIRED)
  set(CMAKE_CXX_CLANG_TIDY ${SONAPROBE_CLANG_TIDY})
endif()

# A room of src/ (or a tool's folder) as a static library: sonaprobe_room(NAME sources...).
function(sonaprobe_room name)
  add_library(sonaprobe_${name} STATIC ${ARGN})
  target_link_libraries(sonaprobe_${name} PUBLIC sonaprobe_options)
endfunction()
