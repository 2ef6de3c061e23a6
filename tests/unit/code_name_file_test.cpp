// The code-name file of --decode is looked at again when it has changed.

#include "probe/code_name_file.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

#include "probe/settings.h"

namespace sonaprobe {
namespace {

// What a lookup has seen of the file holds for 20 ms, by a clock that ticks in several.
void rewriteFile(const std::string& text) {
    std::this_thread::sleep_for(std::chrono::milliseconds(35));
    std::FILE* const file = settings.decodeFile;
    std::rewind(file);
    ASSERT_EQ(ftruncate(fileno(file), 0), 0);
    ASSERT_EQ(std::fwrite(text.data(), 1, text.size(), file), text.size());
    ASSERT_EQ(std::fflush(file), 0);
}

TEST(CodeNameFile, AChangeIsSeen) {
    std::strcpy(settings.decodePath, "a file without name");
    settings.decodeFile = std::tmpfile();
    const NameLookup names = codeNameLookup();
    rewriteFile("0x4 before\n");
    EXPECT_STREQ(names(4), "before");
    rewriteFile("0x8 after\n");
    EXPECT_EQ(names(4), nullptr);
    EXPECT_STREQ(names(8), "after");
    std::fclose(settings.decodeFile);
}

TEST(CodeNameFile, WithoutDecodeThereIsNone) {
    settings = {};
    EXPECT_FALSE(codeNameLookup());
}

}  // namespace
}  // namespace sonaprobe
