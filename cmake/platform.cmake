# Chooses where the four platform calls come from: the host's C library if it has all of them,
# else the stand-in. Sets SONAPROBE_PLATFORM to "host" or "standin".

set(SONAPROBE_PLATFORM "" CACHE STRING "host, standin, or empty to ask the C library")

if(NOT SONAPROBE_PLATFORM)
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_INCLUDES ${PROJECT_SOURCE_DIR}/src)
  check_cxx_source_compiles(
    "#include \"platform/host/calls.h\"
     int main() {
         mach_timebase_info_data_t timebase;
         return sysctl(nullptr, 0, nullptr, nullptr, nullptr, 0) +
                sysctlbyname(\"\", nullptr, nullptr, nullptr, 0) +
                mach_timebase_info(&timebase) + reexec_to_match_kernel();
     }"
    SONAPROBE_HOST_HAS_ALL_CALLS)
  unset(CMAKE_REQUIRED_INCLUDES)
  if(SONAPROBE_HOST_HAS_ALL_CALLS)
    set(SONAPROBE_PLATFORM host)
  else()
    set(SONAPROBE_PLATFORM standin)
  endif()
endif()
message(STATUS "platform calls: ${SONAPROBE_PLATFORM}")
