// What the program says of the trace facility.

#include "probe/tracing.h"

#include "probe/fatal_exit.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "probe/usage.h"

namespace sonaprobe {

namespace {

void warn(const char* message) { printMessage(stderr, "%s", message); }

}  // namespace

TraceSession& traceSession() {
    static constinit TraceSession session({.fail = fatalExit, .warn = warn});
    return session;
}

void setAudioDebugFlags() {
    if (settings.enableAudioTracing) {
        traceSession().startDrivers();
        printVersion();
    } else if (settings.line.verbose) {
        printMessage(stdout, "Will not enable Audio tracing.\n");
    }
}

void printBufferInfo() {
    const platform::KernelBufferInfo info = traceSession().bufferInfo();
    printMessage(stdout,
                 "The kernel buffer settings are:\n"
                 "\tentries:\t%d\n"
                 "\tflags:\t\t0x%x\n"
                 "\tnolog:\t\t%d\n"
                 "\tbufid:\t\t%d\n"
                 "\tthreads:\t%d\n",
                 info.entries, info.flags, info.nolog, info.bufid, info.threads);
}

}  // namespace sonaprobe
