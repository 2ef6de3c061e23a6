// Any allocation of the library may fail: a call says so, ends nothing and leaks nothing.

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <new>
#include <unistd.h>

#include "library.h"

namespace {

constexpr int kNever = -1;
thread_local int allocationsLeft = kNever;
thread_local long allocated = 0;  // and not given back

}  // namespace

// The program's own, which the library's allocations come to as well. Not inlined, where the
// compiler would miss the pair of malloc and delete.
[[gnu::noinline]] void* operator new(size_t size) {
    if (allocationsLeft == 0) throw std::bad_alloc();
    if (allocationsLeft > 0) --allocationsLeft;
    void* const room = std::malloc(size);
    if (room == nullptr) throw std::bad_alloc();
    ++allocated;
    return room;
}

[[gnu::noinline]] void operator delete(void* room) noexcept {
    if (room != nullptr) --allocated;
    std::free(room);
}

void operator delete(void* room, size_t) noexcept { operator delete(room); }

namespace sonaprobe::library {
namespace {

constexpr TraceRecord kRecord = slotOf(kSomeStart);

int openFile(const char* path) {
    sonaprobe_reader* reader = nullptr;
    const int result = sonaprobe_open_file(&reader, path);
    sonaprobe_close(reader);
    return result;
}

int openNames(const char* path) {
    sonaprobe_names* names = nullptr;
    const int result = sonaprobe_open_names(&names, path);
    sonaprobe_close_names(names);
    return result;
}

int openMemory(const char*) {
    sonaprobe_reader* reader = nullptr;
    const int result = sonaprobe_open_memory(&reader, &kRecord, sizeof kRecord);
    sonaprobe_close(reader);
    return result;
}

int printLine(const char*) {
    sonaprobe_reader* reader = nullptr;
    sonaprobe_printer* printer = nullptr;
    int result = sonaprobe_open_memory(&reader, &kRecord, sizeof kRecord);
    if (result == 0) result = sonaprobe_open_printer(&printer);
    const sonaprobe_event* event = nullptr;
    if (result == 0) result = sonaprobe_next(reader, &event);
    const char* line = nullptr;
    if (result == 1) result = sonaprobe_print(printer, event, &line, nullptr);
    sonaprobe_close_printer(printer);
    sonaprobe_close(reader);
    return result == 1 ? 0 : result;
}

void expectErrorsOf(int (*act)(const char* path)) {
    const std::string path = testing::TempDir() + "no_memory_test.codes";
    std::ofstream(path) << "0x05250000 AName\n0x05250004 AnotherNameThatIsLongerThanTheFirst\n";
    const long before = allocated;
    int allowed = 0;
    for (;; ++allowed) {
        allocationsLeft = allowed;
        const int result = act(path.c_str());
        allocationsLeft = kNever;
        ASSERT_EQ(allocated, before) << allowed;
        if (result == 0) break;
        ASSERT_EQ(result, -ENOMEM) << allowed;
    }
    EXPECT_GT(allowed, 0);
    ::unlink(path.c_str());
}

TEST(NoMemory, IsAnErrorOfOpeningAFile) { expectErrorsOf(openFile); }
TEST(NoMemory, IsAnErrorOfOpeningMemory) { expectErrorsOf(openMemory); }
TEST(NoMemory, IsAnErrorOfOpeningNames) { expectErrorsOf(openNames); }
TEST(NoMemory, IsAnErrorOfPrintingALine) { expectErrorsOf(printLine); }

}  // namespace
}  // namespace sonaprobe::library
