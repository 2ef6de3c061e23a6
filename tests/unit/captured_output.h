// Standard output of a piece of a test, as text.

#pragma once

#include <cstdio>
#include <string>
#include <unistd.h>

namespace sonaprobe {

template <typename Action>
std::string capturedOutput(Action action) {
    std::fflush(stdout);
    std::FILE* const file = std::tmpfile();
    const int saved = dup(STDOUT_FILENO);
    dup2(fileno(file), STDOUT_FILENO);
    action();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);

    std::string text(static_cast<size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    text.resize(std::fread(text.data(), 1, text.size(), file));
    std::fclose(file);
    return text;
}

}  // namespace sonaprobe
