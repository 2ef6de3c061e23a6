// The generic driver family, its base classes (classes 1, 3, 4, 7), and the historic controller (class 0).

#include "meanings/tables.h"

namespace sonaprobe::meanings {

namespace {

constexpr Meaning kHistoricRows[] = {
    {0x05240004, "Looks in the primary interrupt handler which streams of the controller ask for service."},
    {0x05240008, "Notes in the primary interrupt handler a value that it has read or computed."},
    {0x0524000C, "Compares in the primary interrupt handler the interrupt status with that of the pass before."},
    {0x05240010, "Takes the time at which a stream's buffer began anew, as measured."},
    {0x05240014, "Takes the time at which a stream's buffer began anew, after the jitter filter."},
};

constexpr Meaning kDriverFamilyRows[] = {
    // PlexoControl
    {0x05240430, "Attaches a control, such as a volume, to its provider."},
    // PlexoDevice
    {0x05240C0C, "Attaches the audio device to its provider and sets up its hardware."},
    {0x05240C18, "Is called by power management to bring the device to another power state."},
    {0x05240C1C, "Hands a power state change over to the work loop, under its lock."},
    {0x05240C20, "Hands a power state change over to the work loop, as called by another driver."},
    {0x05240C24, "Decides under the lock whether the device sleeps, wakes or stays, and starts the change."},
    {0x05240C28, "Blocks until a power state change that is under way has ended."},
    {0x05240C2C, "Starts a power state change, which may go on after the method has returned."},
    {0x05240C30, "Notes that a power state change has ended, and tells those who wait."},
    // PlexoEngine
    {0x05241048, "Attaches the audio engine to its device and publishes it."},
    {0x05241094, "Adds a client, such as the audio server, to those for whom the engine runs."},
    {0x052410BC, "Starts the engine's data transfer."},
    {0x052410C8, "Lets a paused engine run again, and wakes those who wait for it."},
    {0x052410D8, "Reads the state of the engine: running, paused or stopped."},
    {0x052410DC, "Changes the state of the engine: running, paused or stopped."},
    {0x05241160, "Blocks a client until the paused engine runs again."},
    // PlexoPort
    {0x05241C18, "Attaches a port, such as a jack or a speaker, to its provider."},
};

}  // namespace

constinit const Table kHistoric(kHistoricRows);
constinit const Table kDriverFamily(kDriverFamilyRows);

}  // namespace sonaprobe::meanings
