// One owner at a time, owners that die at any moment, and operations left half done.

#include <cerrno>
#include <cstddef>
#include <random>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "facility_fixture.h"
#include "platform/standin/attachment.h"

namespace sonaprobe::standin {
namespace {

using namespace platform;
using Ownership = FacilityTest;

// A child that has run the body, which must answer 0, and lives on until it is killed.
pid_t startAndPark(const std::function<int()>& body) {
    const pid_t child = startChild([&] {
        if (body() != 0) return 1;
        raise(SIGSTOP);
        return 0;
    });
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, WUNTRACED), child);
    EXPECT_TRUE(WIFSTOPPED(status));
    return child;
}

void killAndReap(pid_t child) {
    kill(child, SIGKILL);
    EXPECT_EQ(waitFor(child), -1);
}

int setRegEverything() {
    TraceInterest interest = kEverything;
    size_t length = sizeof interest;
    int name[] = {kCtlKern, kKernKdebug, kKernKdSetReg};
    return sysctl(name, 3, &interest, &length, nullptr, 0) == 0 ? 0 : errno;
}

int readOne() {
    unsigned char record[64];
    size_t length = sizeof record;
    int name[] = {kCtlKern, kKernKdebug, kKernKdReadTr};
    return sysctl(name, 3, record, &length, nullptr, 0) == 0 ? 0 : errno;
}

TEST_F(Ownership, AnotherProcessIsBusyWhileTheOwnerLives) {
    const pid_t other = startAndPark([] { return operate(kKernKdSetBuf, 100); });
    EXPECT_EQ(operate(kKernKdRemove), EBUSY);
    EXPECT_EQ(operate(kKernKdSetBuf, 1), EBUSY);
    EXPECT_EQ(operate(kKernKdSetup), EBUSY);
    EXPECT_EQ(operate(kKernKdEnable, 1), EBUSY);
    EXPECT_EQ(setRegEverything(), EBUSY);
    EXPECT_EQ(readOne(), EBUSY);
    EXPECT_EQ(resetFacility(), EBUSY);
    EXPECT_EQ(holdFacility(), EBUSY);
    KernelBufferInfo info{};
    EXPECT_EQ(getBufferInfo(info), 0);
    EXPECT_EQ(setAudioFlags(1), 0);
    EXPECT_EQ(statusNow().owner, other);
    killAndReap(other);
    EXPECT_FALSE(statusNow().owner);
    EXPECT_EQ(operate(kKernKdRemove), 0);
}

TEST_F(Ownership, BeginsWithTheFirstChangeThatSucceeds) {
    EXPECT_EQ(operate(kKernKdEnable, 1), EINVAL);
    EXPECT_EQ(operate(kKernKdSetBuf, 0), EINVAL);
    EXPECT_FALSE(statusNow().owner);
    EXPECT_EQ(operate(kKernKdSetBuf, 5), 0);
    EXPECT_EQ(statusNow().owner, getpid());
    EXPECT_EQ(operate(kKernKdSetBuf, 0), EINVAL);
    EXPECT_EQ(statusNow().owner, getpid()) << "a failure takes nothing away";
    EXPECT_EQ(operate(kKernKdRemove), 0);
    EXPECT_FALSE(statusNow().owner);
}

TEST_F(Ownership, AChildDoesNotInheritIt) {
    ASSERT_EQ(operate(kKernKdSetBuf, 5), 0);
    EXPECT_EQ(inChild([] { return operate(kKernKdSetBuf, 6); }), EBUSY);
    EXPECT_EQ(inChild([] { return operate(kKernKdRemove); }), EBUSY);
    EXPECT_EQ(statusNow().owner, getpid());
}

TEST_F(Ownership, ASetUpOutlivesItsOwner) {
    const pid_t other = startAndPark([] {
        setBufferSize(1024);
        setUp();
        return enableTracing(true);
    });
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(postMany(producer, 0, 3), 3U);
    killAndReap(other);
    EXPECT_EQ(postMany(producer, 3, 3), 3U);
    EXPECT_EQ(readAll(10).size(), 6U);
    EXPECT_EQ(statusNow().owner, getpid());
    EXPECT_EQ(operate(kKernKdRemove), 0);
    detachProducer(producer);
}

TEST_F(Ownership, HoldTakesItAndNothingElse) {
    setUpWith(1024);
    EXPECT_EQ(inChild(holdFacility), EBUSY);
    // A parked child would share nothing with the owner but the file: give up by removing.
    ASSERT_EQ(operate(kKernKdRemove), 0);
    const pid_t holder = startAndPark(holdFacility);
    EXPECT_EQ(operate(kKernKdSetBuf, 5), EBUSY);
    killAndReap(holder);
    EXPECT_EQ(operate(kKernKdSetBuf, 5), 0);
}

TEST_F(Ownership, AnOperationHalfDoneIsTakenAsRemoved) {
    setUpWith(1024);
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(postMany(producer, 0, 3), 3U);
    producer.state->changing.store(1);
    const FacilityStatus status = statusNow();
    EXPECT_EQ(status.info.entries, 0);
    EXPECT_EQ(status.info.nolog, 1);
    EXPECT_EQ(status.posted, 0U);
    EXPECT_EQ(access(kRingPath, F_OK), -1);
    EXPECT_EQ(postMany(producer, 3, 3), 0U);
    setUpWith(1024);
    EXPECT_EQ(postMany(producer, 6, 1), 1U);
    EXPECT_EQ(readAll(9).size(), 1U);
    detachProducer(producer);
}

TEST_F(Ownership, CountsThatCannotBeAreTakenAsRemoved) {
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    for (const Published<2>::Value& progress : {Published<2>::Value{5, 0}, {1, 2}}) {
        setUpWith(1024);
        EXPECT_EQ(postMany(producer, 0, 3), 3U);
        producer.state->progress.publish(progress);
        EXPECT_EQ(statusNow().info.entries, 0);
    }
    setUpWith(1024);
    producer.state->entries.store(1025);
    EXPECT_EQ(statusNow().info.entries, 0);
    detachProducer(producer);
}

TEST_F(Ownership, AnyBytesInTheStateLeadBackToACleanStart) {
    std::mt19937 random(3);
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    auto* bytes = reinterpret_cast<unsigned char*>(producer.state);
    for (int round = 0; round < 2000; round++) {
        setUpWith(1024);
        ASSERT_EQ(postMany(producer, 0, 1), 1U);
        // A few bytes, or all, after the words that make the file the facility's own.
        const size_t count = round % 2 == 0 ? 1 + random() % 8 : sizeof(State);
        for (size_t i = 0; i < count; i++) {
            const size_t place = offsetof(State, control) + random() % (sizeof(State) - 64);
            bytes[place] = static_cast<unsigned char>(random());
        }
        postMany(producer, 1, 2);
        KernelBufferInfo info{};
        FacilityStatus status{};
        getBufferInfo(info);
        ASSERT_EQ(getStatus(status), 0);
        ASSERT_GE(status.posted, status.lost + status.pending);
        readOne();
        operate(kKernKdEnable, 0);
        ASSERT_EQ(resetFacility(), 0);
    }
    detachProducer(producer);
}

// Owners of all kinds of operations are killed at random; each time the next one finds a facility
// that it can take, set up and read.
TEST_F(Ownership, TheNextRecoversWhereverTheOwnerDied) {
    unsigned random = 1;
    for (int round = 0; round < 150; round++) {
        const pid_t owner = startChild([] {
            for (;;) {
                operate(kKernKdRemove);
                operate(kKernKdSetBuf, 2048);
                setRegEverything();
                operate(kKernKdSetup);
                operate(kKernKdEnable, 1);
                readOne();
                operate(kKernKdEnable, 0);
            }
            return 0;
        });
        random = random * 1664525 + 1013904223;
        usleep(1000 + (random >> 16) % 3000);
        killAndReap(owner);
        ASSERT_EQ(operate(kKernKdRemove), 0) << round;
        ASSERT_EQ(access(kRingPath, F_OK), -1);
        setUpWith(1024);
        Producer producer;
        ASSERT_TRUE(attachProducer(producer));
        ASSERT_EQ(postMany(producer, 0, 10), 10U);
        ASSERT_EQ(readAll(20).size(), 10U);
        ASSERT_EQ(statusNow().lost, 0U);
        detachProducer(producer);
        ASSERT_EQ(operate(kKernKdRemove), 0);
    }
}

}  // namespace
}  // namespace sonaprobe::standin
