// The version line and the usage text.

#include "probe/usage.h"

#include <cstdio>
#include <cstdlib>

#include "probe/output.h"
#include "probe/settings.h"

namespace sonaprobe {

namespace {

// Not in step with the option table, and kept so: "--indentoff" is no option ("indentOff" is), -?
// shows this help alone, "buffer", "size" and "timers" are missing, -H hides the thread.
// clang-format off
constexpr const char* kUsageFormat =
    "\n"
    "Usage: sudo %s [OPTIONS]\n"
    "\n"
    "OPTIONS\n"
    "\tThe available options are as follows:\n"
    "\n"
    "\t--bufsize=size, -b size\n"
    "\t\t Set the trace buffer to hold size number of trace points.\n"
    "\t--all, -a\n"
    "\t\t Show all tracepoint codes, even if they aren't Audio codes.\n"
    "\t--decode[=path-to-code-file], -d [path-to-code-file]\n"
    "\t\t Try to decode unknown tracepoint codes with file. Defaults to '%s'. Implies --all.\n"
    "\t--HAL, -A\n"
    "\t\t Include HAL traces.\n"
    "\t--codes, -c\n"
    "\t\t Print tracepoint codes.\n"
    "\t--time, -t\n"
    "\t\t (Default) Print the local system time (hh:mm) with each LOG.\n"
    "\t--kernel, -k\n"
    "\t\t Print the 'kernel time stamp' with each LOG. (Default is to print the local system time)\n"
    "\t--nostamp, -s\n"
    "\t\t Do not print the timestamp of each tracepoint. This option also disables -t.\n"
    "\t--nogroup, -g\n"
    "\t\t Do not print the group string.\n"
    "\t--nomethod, -m\n"
    "\t\t Do not print the method string.\n"
    "\t--noptr, -u\n"
    "\t\t Do NOT print the Audio object pointer, if it exists.\n"
    "\t--indentoff, -i\n"
    "\t\t Do not indent the logs.\n"
    "\t--notrace, -T\n"
    "\t\t Do not enable Audio tracing.\n"
    "\t--nolog, -L\n"
    "\t\t Disable printing of Audio tracepoint logging.\n"
    "\t--write[=path-to-file], -w [path-to-file]\n"
    "\t\t Log codes in raw format\n"
    "\t--read=path-to-file, -r path-to-file\n"
    "\t\t Read tracepoints from a raw format file\n"
    "\t--cpu, -C\n"
    "\t\t Display CPU numbers.\n"
    "\t--thread, -H\n"
    "\t\t Display thread.\n"
    "\t--interest=type, -I type\n"
    "\t\t Set the interest to type. Defaults to KDBG_RANGETYPE.\n"
    "\t--value1=value, -1 value\n"
    "\t\t Sets interest type value 1 to value. Only valid with --interest.\n"
    "\t--value2=value, -2 value\n"
    "\t\t Sets interest type value 2 to value. Only valid with --interest.\n"
    "\t--basic, -B\n"
    "\t\t Use basic formatting, similar to trace.\n"
    "\t--nosep, -S\n"
    "\t\t Use non-separating format between method and LOG.\n"
    "\t--dump, -D\n"
    "\t\t Read and print the trace buffer using an auto-allocated collection buffer, then exit.\n"
    "\t--register, -R\n"
    "\t\t Print the LOG when we read registers.\n"
    "\t--filter-out=group, -F group\n"
    "\t\t Filter out a particular group.  Option can be used multiple times (ie, -F 42 -F 43)\n"
    "\t--filter-all-except=group, -X group\n"
    "\t\t Filter everything except a particular group.  Option can be used multiple times (ie, -X 42 -X 43)\n"
    "\t--verbose, -v\n"
    "\t\t Verbose mode.\n"
    "\t--version, -V\n"
    "\t\t Print version.\n"
    "\t--listclasses, -l, -?\n"
    "\t\t Show list of audio classes for filtering.\n"
    "\t--help, -h, -?\n"
    "\t\t Show this help.\n";
// clang-format on

}  // namespace

void printVersion() { printMessage(stdout, "sonaprobe version:  %s\n", kVersion); }

void printUsage() {
    std::fprintf(stderr, kUsageFormat, settings.programName, kDefaultDecodePath);
    std::exit(EXIT_SUCCESS);
}

}  // namespace sonaprobe
