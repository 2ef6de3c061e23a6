// The commands of --then: sonascope itself, run over each file that was written.

#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace sonaprobe::scope {

class Answers {
  public:
    // A command of sonascope with its options, such as "why --all"; empty for none. Throws a
    // Failure where there is no such command that only reads a file.
    explicit Answers(const std::string& command);
    ~Answers();
    Answers(const Answers&) = delete;
    Answers& operator=(const Answers&) = delete;

    // Starts the command over a file. `beside` a watch that goes on it may not use a pager. Throws
    // a Failure.
    void begin(const std::string& path, bool beside);

    // Waits for the answers; a signal for this program goes to them. Whether all were given.
    bool finish();

  private:
    std::vector<std::string> words_;
    std::vector<pid_t> running_;
};

}  // namespace sonaprobe::scope
