// Posts numbered events in bursts until it is killed: torture-load BURST PAUSE, the pause in
// microseconds. A number that was not logged, as nobody was tracing, is posted again.

#include <cstdlib>
#include <unistd.h>

#include "platform/standin/producer.h"

int main(int argc, char** argv) {
    using namespace sonaprobe::standin;
    if (argc != 3) return EXIT_FAILURE;
    const unsigned long burst = std::strtoul(argv[1], nullptr, 0);
    const auto pause = static_cast<useconds_t>(std::strtoul(argv[2], nullptr, 0));
    Producer producer;
    for (uint64_t number = 1;;) {
        if (!attachProducer(producer)) return EXIT_FAILURE;
        for (unsigned long i = 0; i < burst; ++i) {
            if (post(producer, {number, 0, number, 0, 0, 0, 0x05245C0E})) ++number;
        }
        usleep(pause);
    }
}
