// What the tests of the stand-in share: a facility fresh from boot, in a /dev/shm of the test
// process's own where the host lets it have one, and short spellings of the calls.

#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <vector>

#include "platform/platform.h"
#include "platform/standin/facility.h"
#include "platform/standin/producer.h"

namespace sonaprobe::standin {

class FacilityTest : public testing::Test {
  protected:
    void SetUp() override;

    // Size, set-up and, if wanted, enabling, all of which must succeed.
    static void setUpWith(uint32_t entries, bool enabled = true);
};

// For tests that spoil or fill the facility's folder: skipped without a /dev/shm of their own.
class PrivateFacilityTest : public FacilityTest {
  protected:
    void SetUp() override;
};

// A trace operation through sysctl. 0, or errno.
int operate(int operation);
int operate(int operation, int value);

// All records there are room for, through sysctl.
std::vector<RecordWords> readAll(size_t room);

FacilityStatus statusNow();

// A record whose debug id and argument 1 are given.
RecordWords recordOf(uint32_t debugid, uint64_t argument);

// The first of them has argument 1 `first`, and so on. Returns how many were logged.
uint64_t postMany(Producer& producer, uint64_t first, uint64_t count);

// Runs the body in a child process, whose exit status is the result; -1 if a signal ended it.
int inChild(const std::function<int()>& body);

// Starts the body in a child process, which does not outlive this one.
pid_t startChild(const std::function<int()>& body);
int waitFor(pid_t child);

}  // namespace sonaprobe::standin
