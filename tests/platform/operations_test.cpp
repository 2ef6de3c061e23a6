// Each operation through the calls' own names: what it does, and the errno of each misuse.

#include <cerrno>
#include <cstring>

#include "facility_fixture.h"
#include "platform/standin/clock.h"

namespace sonaprobe::standin {
namespace {

using namespace platform;
using Operations = FacilityTest;

int call(std::vector<int> name, void* old = nullptr, size_t* oldLength = nullptr,
         void* newValue = nullptr, size_t newLength = 0) {
    const auto words = static_cast<unsigned>(name.size());
    return sysctl(name.data(), words, old, oldLength, newValue, newLength) == 0 ? 0 : errno;
}

int callAudio(AudioDebugFlagsRequest request, AudioDebugFlagsRequest* reply, size_t replyLength,
              size_t requestLength = sizeof(AudioDebugFlagsRequest)) {
    const int result = sysctlbyname("debug.Audio", reply, reply == nullptr ? nullptr : &replyLength,
                                    &request, requestLength);
    return result == 0 ? 0 : errno;
}

constexpr AudioDebugFlagsRequest kGet{kAudioDebugMagic, kAudioFlagsGet, 0};

KernelBufferInfo bufferInfo() {
    KernelBufferInfo info{};
    size_t length = sizeof info;
    EXPECT_EQ(call({1, 24, kKernKdGetBuf}, &info, &length), 0);
    EXPECT_EQ(length, 20U);
    return info;
}

TEST_F(Operations, RefuseUnknownNames) {
    EXPECT_EQ(call({1}), ENOENT);
    EXPECT_EQ(call({1, 24}), ENOENT);
    EXPECT_EQ(call({2, 24, kKernKdRemove}), ENOENT);
    EXPECT_EQ(call({1, 23, kKernKdRemove}), ENOENT);
    EXPECT_EQ(call({1, 24, 9}), ENOENT);
    EXPECT_EQ(sysctl(nullptr, 3, nullptr, nullptr, nullptr, 0), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(sysctlbyname("debug.Video", nullptr, nullptr, nullptr, 0), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(sysctlbyname(nullptr, nullptr, nullptr, nullptr, 0), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(Operations, RefuseAWrongNumberOfWordsAndNewValues) {
    for (const int operation : {kKernKdEnable, kKernKdSetBuf}) {
        EXPECT_EQ(call({1, 24, operation}), EINVAL);
        EXPECT_EQ(call({1, 24, operation, 1, 1}), EINVAL);
    }
    for (const int operation :
         {kKernKdGetBuf, kKernKdSetup, kKernKdRemove, kKernKdSetReg, kKernKdReadTr}) {
        EXPECT_EQ(call({1, 24, operation, 1}), EINVAL);
    }
    int value = 0;
    EXPECT_EQ(call({1, 24, kKernKdRemove}, nullptr, nullptr, &value, 0), EINVAL);
    EXPECT_EQ(call({1, 24, kKernKdRemove}, nullptr, nullptr, nullptr, 4), EINVAL);
}

TEST_F(Operations, FollowTheLifeOfASetUp) {
    EXPECT_EQ(bufferInfo().entries, 0);
    EXPECT_EQ(bufferInfo().nolog, 1);
    EXPECT_EQ(operate(kKernKdRemove), 0);
    EXPECT_EQ(operate(kKernKdEnable, 1), EINVAL);
    EXPECT_EQ(operate(kKernKdEnable, 0), EINVAL);
    EXPECT_EQ(operate(kKernKdSetup), EINVAL);
    EXPECT_EQ(operate(kKernKdSetBuf, 0), EINVAL);

    EXPECT_EQ(operate(kKernKdSetBuf, 2000), 0);
    EXPECT_EQ(bufferInfo().entries, 0);
    EXPECT_EQ(operate(kKernKdSetup), 0);
    EXPECT_EQ(bufferInfo().entries, 2000);
    EXPECT_EQ(bufferInfo().nolog, 1);
    EXPECT_EQ(operate(kKernKdEnable, 1), 0);
    EXPECT_EQ(operate(kKernKdEnable, 1), 0);
    EXPECT_EQ(bufferInfo().nolog, 0);
    EXPECT_EQ(bufferInfo().flags, 0U);
    EXPECT_EQ(operate(kKernKdEnable, 0), 0);
    EXPECT_EQ(bufferInfo().nolog, 1);
    EXPECT_EQ(operate(kKernKdRemove), 0);
    EXPECT_EQ(bufferInfo().entries, 0);
    EXPECT_EQ(operate(kKernKdSetup), EINVAL);
}

TEST_F(Operations, SetUpAnewInPlaceOfWhatWasThere) {
    setUpWith(1024);
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(postMany(producer, 0, 10), 10U);
    setUpWith(4096);
    EXPECT_EQ(bufferInfo().entries, 4096);
    EXPECT_EQ(statusNow().posted, 0U);
    EXPECT_EQ(postMany(producer, 10, 2), 2U);
    EXPECT_EQ(readAll(100), (std::vector{recordOf(0x05245C0C, 10), recordOf(0x05245C0C, 11)}));
    detachProducer(producer);
}

TEST_F(Operations, KeepLengthsToTheContract) {
    unsigned char room[64];
    size_t length = 19;
    EXPECT_EQ(call({1, 24, kKernKdGetBuf}, room, &length), ENOMEM);
    EXPECT_EQ(call({1, 24, kKernKdGetBuf}, nullptr, &length), EINVAL);
    EXPECT_EQ(call({1, 24, kKernKdGetBuf}, room, nullptr), EINVAL);
    length = 64;
    EXPECT_EQ(call({1, 24, kKernKdGetBuf}, room, &length), 0);
    EXPECT_EQ(length, 20U);

    TraceInterest interest = kEverything;
    for (const size_t wrong : {0U, 19U, 21U}) {
        length = wrong;
        EXPECT_EQ(call({1, 24, kKernKdSetReg}, &interest, &length), EINVAL);
    }
    length = 20;
    EXPECT_EQ(call({1, 24, kKernKdSetReg}, nullptr, &length), EINVAL);
    EXPECT_EQ(call({1, 24, kKernKdSetReg}, &interest, &length), 0);
    interest.type = 0x10000;
    EXPECT_EQ(call({1, 24, kKernKdSetReg}, &interest, &length), EINVAL);

    length = sizeof room;
    EXPECT_EQ(call({1, 24, kKernKdReadTr}, room, &length), EINVAL) << "not set up";
    setUpWith(1024);
    EXPECT_EQ(call({1, 24, kKernKdReadTr}, nullptr, &length), EINVAL);
    EXPECT_EQ(call({1, 24, kKernKdReadTr}, room, nullptr), EINVAL);
    length = 63;
    EXPECT_EQ(call({1, 24, kKernKdReadTr}, room, &length), EINVAL);
    length = 64;
    EXPECT_EQ(call({1, 24, kKernKdReadTr}, room, &length), 0);
    EXPECT_EQ(length, 0U);
}

TEST_F(Operations, RememberTheFilterUntilItIsRemoved) {
    TraceInterest interest{kInterestValues, 5, 9, 0, 0};
    size_t length = sizeof interest;
    ASSERT_EQ(call({1, 24, kKernKdSetReg}, &interest, &length), 0);
    EXPECT_EQ(statusNow().interest.type, kInterestValues);
    EXPECT_EQ(statusNow().interest.value2, 9U);
    ASSERT_EQ(operate(kKernKdRemove), 0);
    EXPECT_EQ(statusNow().interest.type, kInterestRange);
    EXPECT_EQ(statusNow().interest.value2, 0xFFFFFFFF);
}

TEST_F(Operations, AudioFlagsAreSetAndGot) {
    AudioDebugFlagsRequest reply{};
    EXPECT_EQ(callAudio(kGet, &reply, sizeof reply), 0);
    EXPECT_EQ(reply.value, 0U);
    EXPECT_EQ(callAudio({kAudioDebugMagic, kAudioFlagsSet, 0xA5}, nullptr, 0), 0);
    EXPECT_EQ(callAudio(kGet, &reply, sizeof reply), 0);
    EXPECT_EQ(reply.magic, kAudioDebugMagic);
    EXPECT_EQ(reply.operation, kAudioFlagsGet);
    EXPECT_EQ(reply.value, 0xA5U);
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(audioDebugFlags(producer), 0xA5U);
    EXPECT_EQ(operate(kKernKdRemove), 0);
    EXPECT_EQ(audioDebugFlags(producer), 0xA5U);
}

TEST_F(Operations, AudioFlagsRefuseWrongRequests) {
    AudioDebugFlagsRequest reply{};
    EXPECT_EQ(callAudio({0x44445541, kAudioFlagsGet, 0}, &reply, sizeof reply), EINVAL);
    EXPECT_EQ(callAudio({kAudioDebugMagic, 2, 0}, &reply, sizeof reply), EINVAL);
    EXPECT_EQ(callAudio(kGet, &reply, 11), EINVAL);
    EXPECT_EQ(callAudio(kGet, &reply, 13), EINVAL);
    EXPECT_EQ(callAudio(kGet, &reply, sizeof reply, 11), EINVAL);
    EXPECT_EQ(callAudio(kGet, nullptr, 0), EINVAL);
    EXPECT_EQ(callAudio({kAudioDebugMagic, kAudioFlagsSet, 1}, &reply, sizeof reply), EINVAL);
    EXPECT_EQ(sysctlbyname("debug.Audio", nullptr, nullptr, nullptr, 12), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(statusNow().audioFlags, 0U);
}

TEST_F(Operations, FailWhenArmed) {
    ASSERT_EQ(armFailure(FailurePoint::setBuf, {EPERM, 1, 2}), 0);
    EXPECT_EQ(operate(kKernKdSetBuf, 100), 0);
    EXPECT_EQ(operate(kKernKdSetBuf, 100), EPERM);
    EXPECT_EQ(operate(kKernKdSetBuf, 100), EPERM);
    EXPECT_EQ(operate(kKernKdSetBuf, 100), 0);

    const std::pair<FailurePoint, int> plain[] = {{FailurePoint::setup, kKernKdSetup},
                                                  {FailurePoint::remove, kKernKdRemove}};
    for (const auto& [point, operation] : plain) {
        ASSERT_EQ(armFailure(point, {ENOSPC, 0, 1}), 0);
        EXPECT_EQ(operate(operation), ENOSPC);
        EXPECT_EQ(operate(operation), 0);
    }
    ASSERT_EQ(armFailure(FailurePoint::enable, {EIO, 0, 1}), 0);
    EXPECT_EQ(operate(kKernKdEnable, 1), EIO);

    KernelBufferInfo info{};
    TraceInterest interest = kEverything;
    size_t length = 20;
    ASSERT_EQ(armFailure(FailurePoint::getBuf, {EBUSY, 0, 1}), 0);
    EXPECT_EQ(call({1, 24, kKernKdGetBuf}, &info, &length), EBUSY);
    ASSERT_EQ(armFailure(FailurePoint::setReg, {EBUSY, 0, 1}), 0);
    EXPECT_EQ(call({1, 24, kKernKdSetReg}, &interest, &length), EBUSY);
    unsigned char record[64];
    length = sizeof record;
    ASSERT_EQ(armFailure(FailurePoint::readTr, {EBUSY, 0, 1}), 0);
    EXPECT_EQ(call({1, 24, kKernKdReadTr}, record, &length), EBUSY);
}

TEST_F(Operations, AudioFlagsFailWhenArmed) {
    const AudioDebugFlagsRequest set{kAudioDebugMagic, kAudioFlagsSet, 1};
    AudioDebugFlagsRequest reply{};
    ASSERT_EQ(armFailure(FailurePoint::audioGet, {ENOMEM, 0, 1}), 0);
    EXPECT_EQ(callAudio(set, nullptr, 0), 0);
    EXPECT_EQ(callAudio(kGet, &reply, sizeof reply), ENOMEM);
    EXPECT_EQ(callAudio(kGet, &reply, sizeof reply), 0);
    ASSERT_EQ(armFailure(FailurePoint::audioSet, {EPERM, 0, 1}), 0);
    EXPECT_EQ(callAudio(kGet, &reply, sizeof reply), 0);
    EXPECT_EQ(callAudio(set, nullptr, 0), EPERM);
    ASSERT_EQ(armFailure(FailurePoint::audio, {EIO, 0, 2}), 0);
    EXPECT_EQ(callAudio(kGet, &reply, sizeof reply), EIO);
    EXPECT_EQ(callAudio(set, nullptr, 0), EIO);
    ASSERT_EQ(armFailure(FailurePoint::audio, {EIO, 0, 1}), 0);
    ASSERT_EQ(armFailure(FailurePoint::audio, {EIO, 0, 0}), 0);
    EXPECT_EQ(callAudio(set, nullptr, 0), 0);
}

TEST_F(Operations, ResetForgetsAll) {
    setUpWith(1024);
    ASSERT_EQ(setAudioFlags(3), 0);
    ASSERT_EQ(armFailure(FailurePoint::getBuf, {EIO, 0, 9}), 0);
    ASSERT_EQ(resetFacility(), 0);
    const FacilityStatus status = statusNow();
    EXPECT_EQ(status.info.entries, 0);
    EXPECT_EQ(status.audioFlags, 0U);
    EXPECT_FALSE(status.owner);
    EXPECT_EQ(bufferInfo().nolog, 1);
}

TEST(Clock, TicksAtItsTimebase) {
    mach_timebase_info_data_t timebase{};
    ASSERT_EQ(mach_timebase_info(&timebase), 0);
    EXPECT_EQ(timebase.numer, 125U);
    EXPECT_EQ(timebase.denom, 3U);
    const timespec pause{0, 20'000'000};
    timespec before{};
    timespec after{};
    clock_gettime(CLOCK_MONOTONIC, &before);
    const uint64_t start = now();
    nanosleep(&pause, nullptr);
    const uint64_t end = now();
    clock_gettime(CLOCK_MONOTONIC, &after);
    const int64_t outside =
        (after.tv_sec - before.tv_sec) * 1'000'000'000 + after.tv_nsec - before.tv_nsec;
    EXPECT_GE(end - start, 20U * 24'000 - 1);
    EXPECT_LE(static_cast<int64_t>(end - start) * 125 / 3, outside + 50);
    EXPECT_EQ(reexec_to_match_kernel(), 0);
}

}  // namespace
}  // namespace sonaprobe::standin
