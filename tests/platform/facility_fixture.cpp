// The shared pieces, and the test program's main.

#include "facility_fixture.h"

#include <cerrno>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sonaprobe::standin {
namespace {

bool shmIsPrivate = false;

// Leaves the machine's own facility alone.
bool takePrivateShm() {
    return unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", "/dev/shm", "tmpfs", 0, "size=1g") == 0;
}

int answerOf(int result) { return result == 0 ? 0 : errno; }

}  // namespace

void FacilityTest::SetUp() {
    if (geteuid() != 0) GTEST_SKIP() << "the trace facility is root's";
    ASSERT_EQ(resetFacility(), 0);
}

void FacilityTest::setUpWith(uint32_t entries, bool enabled) {
    ASSERT_EQ(setBufferSize(entries), 0);
    ASSERT_EQ(setUp(), 0);
    ASSERT_EQ(enabled ? enableTracing(true) : 0, 0);
}

void PrivateFacilityTest::SetUp() {
    if (!shmIsPrivate) GTEST_SKIP() << "no right to a /dev/shm of its own";
    FacilityTest::SetUp();
}

int operate(int operation) {
    int name[] = {platform::kCtlKern, platform::kKernKdebug, operation};
    return answerOf(sysctl(name, 3, nullptr, nullptr, nullptr, 0));
}

int operate(int operation, int value) {
    int name[] = {platform::kCtlKern, platform::kKernKdebug, operation, value};
    return answerOf(sysctl(name, 4, nullptr, nullptr, nullptr, 0));
}

std::vector<RecordWords> readAll(size_t room) {
    std::vector<uint64_t> slots(room * kSlotWords);
    int name[] = {platform::kCtlKern, platform::kKernKdebug, platform::kKernKdReadTr};
    size_t length = room * kSlotBytes;
    EXPECT_EQ(answerOf(sysctl(name, 3, slots.data(), &length, nullptr, 0)), 0);
    EXPECT_LE(length, room);
    std::vector<RecordWords> records(length);
    for (size_t i = 0; i < length; i++) {
        std::copy_n(slots.begin() + static_cast<ptrdiff_t>(i * kSlotWords), records[i].size(),
                    records[i].begin());
    }
    return records;
}

FacilityStatus statusNow() {
    FacilityStatus status{};
    EXPECT_EQ(getStatus(status), 0);
    return status;
}

RecordWords recordOf(uint32_t debugid, uint64_t argument) {
    return {1000 + argument, argument, ~argument, argument << 32, 4, 5, debugid};
}

uint64_t postMany(Producer& producer, uint64_t first, uint64_t count) {
    uint64_t logged = 0;
    for (uint64_t i = 0; i < count; i++) {
        if (post(producer, recordOf(0x05245C0C, first + i))) logged++;
    }
    return logged;
}

pid_t startChild(const std::function<int()>& body) {
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child != 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    _exit(getppid() == parent ? body() : 1);
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) != child) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int inChild(const std::function<int()>& body) { return waitFor(startChild(body)); }

}  // namespace sonaprobe::standin

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    sonaprobe::standin::shmIsPrivate = sonaprobe::standin::takePrivateShm();
    return RUN_ALL_TESTS();
}
