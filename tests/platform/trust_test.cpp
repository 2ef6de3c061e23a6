// Folders and files that are not the facility's own, files that vanish, and a /dev/shm without
// room.

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <signal.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include "facility_fixture.h"
#include "platform/standin/attachment.h"

namespace sonaprobe::standin {
namespace {

namespace fs = std::filesystem;
using platform::kKernKdRemove;

constexpr uid_t kStranger = 12345;

// Root of a user namespace of its own knows no strangers.
bool hasStrangers() {
    std::ifstream map("/proc/self/uid_map");
    uint64_t first = 0, mapped = 0, count = 0;
    map >> first >> mapped >> count;
    return count > kStranger;
}

void giveAway(const char* path) {
    if (!hasStrangers()) GTEST_SKIP() << "needs root, to have another user";
    ASSERT_EQ(chown(path, kStranger, 0), 0);
}
constexpr const char* kElsewhere = "/dev/shm/elsewhere";

void makeEmpty(const char* path) {
    ASSERT_EQ(close(open(path, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600)), 0);
}

void overwrite(const char* path, std::streamoff offset, uint64_t word) {
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(offset);
    file.write(reinterpret_cast<const char*>(&word), sizeof word);
    ASSERT_TRUE(file.flush());
}

struct Spoiling {
    const char* name;
    void (*spoil)();
    const char* path;    // what the refusal names
    const char* reason;  // and says of it
};

void PrintTo(const Spoiling& row, std::ostream* out) { *out << row.name; }

const Spoiling kSpoilings[] = {
    {"folder of a stranger", [] { giveAway(kFolder); }, kFolder, "belongs to another user"},
    {"folder open to others", [] { ASSERT_EQ(chmod(kFolder, 0755), 0); }, kFolder,
     "is open to other users"},
    {"another folder, of a stranger",
     [] {
         fs::rename(kFolder, kElsewhere);
         fs::create_directory(kFolder);
         giveAway(kFolder);
     },
     kFolder, "belongs to another user"},
    {"link to the folder",
     [] {
         fs::rename(kFolder, kElsewhere);
         fs::create_symlink(kElsewhere, kFolder);
     },
     kFolder, "is a link"},
    {"file for a folder",
     [] {
         fs::remove_all(kFolder);
         makeEmpty(kFolder);
     },
     kFolder, "is not a folder"},
    {"state of a stranger", [] { giveAway(kStatePath); }, kStatePath, "belongs to another user"},
    {"state open to others", [] { ASSERT_EQ(chmod(kStatePath, 0640), 0); }, kStatePath,
     "is open to other users"},
    {"state with two names", [] { fs::create_hard_link(kStatePath, kElsewhere); }, kStatePath,
     "has another name"},
    {"link to the state",
     [] {
         fs::rename(kStatePath, kElsewhere);
         fs::create_symlink(kElsewhere, kStatePath);
     },
     kStatePath, "is a link"},
    {"folder for a state",
     [] {
         fs::remove(kStatePath);
         fs::create_directory(kStatePath);
     },
     kStatePath, "is not a plain file"},
    {"copy of the state with another magic",
     [] {
         fs::copy_file(kStatePath, kElsewhere);
         overwrite(kElsewhere, 0, 1);
         fs::rename(kElsewhere, kStatePath);
     },
     kStatePath, "has a wrong header"},
    {"copy of the state with another size",
     [] {
         fs::copy_file(kStatePath, kElsewhere);
         overwrite(kElsewhere, 8, 1);
         fs::rename(kElsewhere, kStatePath);
     },
     kStatePath, "has a wrong header"},
    {"state cut short",
     [] {
         fs::copy_file(kStatePath, kElsewhere);
         fs::resize_file(kElsewhere, 100);
         fs::rename(kElsewhere, kStatePath);
     },
     kStatePath, "has a wrong length"},
    {"ring of a stranger", [] { giveAway(kRingPath); }, kRingPath, "belongs to another user"},
    {"link to the ring",
     [] {
         fs::rename(kRingPath, kElsewhere);
         fs::create_symlink(kElsewhere, kRingPath);
     },
     kRingPath, "is a link"},
    {"copy of the ring with more slots",
     [] {
         fs::copy_file(kRingPath, kElsewhere);
         overwrite(kElsewhere, 16, 1 << 20);
         fs::rename(kElsewhere, kRingPath);
     },
     kRingPath, "has a wrong header"},
    {"copy of the ring, cut short",
     [] {
         fs::copy_file(kRingPath, kElsewhere);
         fs::resize_file(kElsewhere, 8192);
         fs::rename(kElsewhere, kRingPath);
     },
     kRingPath, "has a wrong header"},
    {"empty ring",
     [] {
         fs::remove(kRingPath);
         makeEmpty(kRingPath);
     },
     kRingPath, "has a wrong header"},
};

class Trust : public PrivateFacilityTest, public testing::WithParamInterface<Spoiling> {};

TEST_P(Trust, RefusesWhatIsNotTheFacilitysOwn) {
    setUpWith(1024);
    GetParam().spoil();
    if (HasFatalFailure() || IsSkipped()) return;
    platform::KernelBufferInfo info{};
    FacilityStatus status{};
    uint32_t flags = 0;
    EXPECT_EQ(operate(kKernKdRemove), EPERM);
    EXPECT_EQ(getBufferInfo(info), EPERM);
    EXPECT_EQ(getStatus(status), EPERM);
    EXPECT_EQ(getAudioFlags(flags), EPERM);
    EXPECT_STREQ(lastRefusal().path, GetParam().path);
    EXPECT_STREQ(lastRefusal().reason, GetParam().reason);
    EXPECT_EQ(inChild([] { return operate(kKernKdRemove); }), EPERM);

    fs::remove_all(kFolder);
    fs::remove_all(kElsewhere);
    EXPECT_EQ(operate(kKernKdRemove), 0) << "removing what was there is the way out";
}

INSTANTIATE_TEST_SUITE_P(Spoilt, Trust, testing::ValuesIn(kSpoilings), [](const auto& row) {
    std::string name = row.param.name;
    std::erase(name, ',');
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

class Folder : public PrivateFacilityTest {};

TEST_F(Folder, IsClosedToOthers) {
    setUpWith(1024);
    struct stat found {};
    ASSERT_EQ(lstat(kFolder, &found), 0);
    EXPECT_EQ(found.st_mode, static_cast<mode_t>(S_IFDIR | 0700));
    for (const char* path : {kStatePath, kRingPath}) {
        ASSERT_EQ(lstat(path, &found), 0);
        EXPECT_EQ(found.st_mode, static_cast<mode_t>(S_IFREG | 0600));
    }
}

TEST_F(Folder, IsRootsAlone) {
    if (!hasStrangers()) GTEST_SKIP() << "needs root, to have another user";
    fs::remove_all(kFolder);
    EXPECT_EQ(inChild([] { return setuid(kStranger) == 0 ? operate(kKernKdRemove) : 0; }), EPERM);
    EXPECT_FALSE(fs::exists(kFolder));
}

TEST_F(Folder, ARingThatWasReplacedIsNotTakenForTheOldOneOfItsNumber) {
    setUpWith(1024);
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(postMany(producer, 0, 1), 1U);
    const uint16_t number = producer.ring.number;
    {
        // As after so many set-ups that the numbers have come round.
        const auto hold = holdAttachment();
        attach()->control.store(controlWord(static_cast<uint16_t>(number - 2), false, 0));
    }
    setUpWith(1024);
    ASSERT_EQ(statusNow().info.bufid, number);
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(postMany(producer, 1, 3), 3U);
    EXPECT_EQ(readAll(9).size(), 3U);
    detachProducer(producer);
}

// The operations of a pass trust a look for a tenth of a second.
TEST_F(Folder, IsLookedAtAgainByThePasses) {
    setUpWith(1024);
    platform::KernelBufferInfo info{};
    unsigned char slot[kSlotBytes];
    uint64_t count = 0;
    EXPECT_EQ(getBufferInfo(info), 0);
    for (const char* path : {kFolder, kStatePath, kRingPath}) {
        fs::permissions(path, fs::perms::others_read, fs::perm_options::add);
        usleep(120'000);
        EXPECT_EQ(getBufferInfo(info), EPERM) << path;
        EXPECT_EQ(readRecords(slot, 1, count), EPERM) << path;
        fs::permissions(path, fs::perms::others_read, fs::perm_options::remove);
        EXPECT_EQ(getBufferInfo(info), 0) << path;
    }
    fs::remove(kRingPath);
    usleep(120'000);
    EXPECT_EQ(getBufferInfo(info), 0);
    EXPECT_EQ(info.entries, 0);
}

TEST_F(Folder, AndAllInItMayBeReplacedBetweenTwoLooks) {
    fs::remove_all(kFolder);  // set-ups are counted from the start, here as in replaceAll()
    setUpWith(1024);
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(postMany(producer, 0, 3), 3U);
    EXPECT_EQ(readAll(1).size(), 1U);
    const auto replaceAll = [] {
        fs::remove_all(kFolder);
        setUpWith(1024);
        Producer other;
        return attachProducer(other) && postMany(other, 10, 2) == 2 ? 0 : 1;
    };
    ASSERT_EQ(inChild(replaceAll), 0);
    ASSERT_TRUE(attachProducer(producer)) << "looks at the files, before readAll() would again";
    EXPECT_EQ(readAll(9), std::vector({recordOf(0x05245C0C, 10), recordOf(0x05245C0C, 11)}));
    detachProducer(producer);
}

// Set-up numbers begin with 0, once they have come round.
TEST_F(Folder, ASetUpIsLeftAloneByThoseWhoHaveNotItsRing) {
    platform::KernelBufferInfo info{};
    {
        const auto hold = holdAttachment();
        attach()->control.store(controlWord(UINT16_MAX, false, 0));
    }
    int step[2];
    ASSERT_EQ(pipe(step), 0);
    const pid_t owner = startChild([&] {
        setUpWith(1024);
        close(step[1]);
        pause();
        return 0;
    });
    close(step[1]);
    char end;
    EXPECT_EQ(read(step[0], &end, 1), 0) << "which ends with the other side's close";
    EXPECT_EQ(getBufferInfo(info), 0);
    EXPECT_EQ(info.bufid, 0);
    EXPECT_EQ(info.entries, 1024);
    close(step[0]);
    kill(owner, SIGKILL);
    waitFor(owner);
}

TEST_F(Folder, MayBeRemovedUnderARun) {
    setUpWith(1024);
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(postMany(producer, 0, 1), 1U);
    fs::remove_all(kFolder);
    EXPECT_EQ(statusNow().info.entries, 0);
    EXPECT_FALSE(statusNow().owner);
    setUpWith(2048);
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(postMany(producer, 1, 2), 2U);
    EXPECT_EQ(readAll(9).size(), 2U);
    detachProducer(producer);
}

TEST_F(Folder, ARingThatVanishedIsTakenAsRemoved) {
    setUpWith(1024);
    fs::remove(kRingPath);
    EXPECT_EQ(statusNow().info.entries, 0);
    EXPECT_EQ(enableTracing(true), EINVAL);
}

TEST_F(Folder, ForgetsTheTracesOfACreatorThatWasKilled) {
    fs::remove(kStatePath);
    std::ofstream(std::string(kStatePath) + ".new") << "half";
    makeEmpty(kRingPath);
    setUpWith(1024);
    EXPECT_EQ(statusNow().info.entries, 1024);
    EXPECT_FALSE(fs::exists(std::string(kStatePath) + ".new"));
}

TEST_F(Folder, IsMadeOnceByManyAtATime) {
    for (int round = 0; round < 20; round++) {
        fs::remove_all(kFolder);
        std::array<pid_t, 8> children{};
        for (pid_t& child : children) {
            child = startChild([] {
                uint32_t flags = 0;
                return setAudioFlags(7) != 0 || getAudioFlags(flags) != 0 || flags != 7 ? 1 : 0;
            });
        }
        for (const pid_t child : children) ASSERT_EQ(waitFor(child), 0);
        ASSERT_EQ(statusNow().audioFlags, 7U) << "all of them meant the same state";
    }
}

// A /dev/shm of some bytes on top of the test's own.
class LittleRoom : public PrivateFacilityTest {
  protected:
    void TearDown() override {
        if (mounted_) umount2("/dev/shm", MNT_DETACH);
    }
    void mountShm(const std::string& size) {
        mounted_ = mount("none", "/dev/shm", "tmpfs", 0, ("size=" + size).c_str()) == 0;
        ASSERT_TRUE(mounted_);
        ASSERT_EQ(resetFacility(), 0);
    }
    static uint64_t freeBytes() {
        struct statfs system {};
        EXPECT_EQ(statfs("/dev/shm", &system), 0);
        return system.f_bavail * static_cast<uint64_t>(system.f_bsize);
    }

  private:
    bool mounted_ = false;
};

TEST_F(LittleRoom, TakesHalfOfWhatIsFree) {
    mountShm("2m");
    const uint64_t room = freeBytes();
    setUpWith(5'000'000);
    const int32_t entries = statusNow().info.entries;
    EXPECT_EQ(static_cast<uint64_t>(entries), (room / 2 - kRingHeaderBytes) / kSlotBytes);
    // The ring is reserved: a file system filled up meanwhile does not hurt.
    std::ofstream(kElsewhere) << std::string(freeBytes(), 'x') << std::flush;
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(postMany(producer, 0, 40'000), 40'000U);
    EXPECT_EQ(readAll(40'000).size(), static_cast<size_t>(entries));
    detachProducer(producer);
}

TEST_F(LittleRoom, TakesAllThatWasAskedForWhereItFits) {
    mountShm("2m");
    setUpWith(30'000);
    EXPECT_EQ(statusNow().info.entries, 30'000);
}

TEST_F(LittleRoom, LeavesNothingBehindWhereTooFewFit) {
    mountShm("128k");
    const uint64_t room = freeBytes();
    ASSERT_EQ(setBufferSize(5'000), 0);
    EXPECT_EQ(setUp(), ENOMEM);
    EXPECT_EQ(statusNow().info.entries, 0);
    EXPECT_FALSE(fs::exists(kRingPath));
    EXPECT_EQ(freeBytes(), room);
    ASSERT_EQ(setBufferSize(1'000), 0);
    EXPECT_EQ(setUp(), 0) << "few, but all that were asked for";
}

TEST_F(LittleRoom, HasNoneForTheState) {
    mountShm("128k");
    fs::remove_all(kFolder);
    std::ofstream(kElsewhere) << std::string(freeBytes(), 'x') << std::flush;
    FacilityStatus status{};
    EXPECT_EQ(getStatus(status), ENOMEM);
    fs::remove(kElsewhere);
    EXPECT_EQ(getStatus(status), 0);
}

TEST_F(LittleRoom, ARemovedRingGivesItsRoomBack) {
    mountShm("2m");
    const uint64_t room = freeBytes();
    setUpWith(10'000);
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_EQ(postMany(producer, 0, 1), 1U);
    ASSERT_EQ(removeBuffer(), 0);
    EXPECT_LT(freeBytes(), room) << "as long as a producer has it mapped";
    EXPECT_EQ(postMany(producer, 1, 1), 0U);
    EXPECT_EQ(freeBytes(), room);
    detachProducer(producer);
}

}  // namespace
}  // namespace sonaprobe::standin
