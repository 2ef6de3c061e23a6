// Standard output as a command writes it: colour, width, pager, and failures that are told.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace sonaprobe::scope {

enum class ColorWhen : uint8_t { automatic, always, never };

struct OutputOptions {
    bool json = false;
    bool noPager = false;
    ColorWhen color = ColorWhen::automatic;
};

// What a piece of text means. Red belongs to dropouts and to nothing else, amber to failures.
enum class Tone : uint8_t { plain, head, dim, failure, dropout, driver };

struct Style {
    Tone tone = Tone::plain;
    uint8_t hue = 0;  // of Tone::driver: see hueOf()
};

// The hue of an event's driver family, one of a set that colour-blind people can tell apart.
uint8_t hueOf(uint32_t code);

// One at a time. A write that fails throws what main then says: nothing where the reader has gone.
class Output {
  public:
    explicit Output(const OutputOptions& options);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    bool terminal() const { return terminal_; }
    bool colored() const { return colored_; }
    bool json() const { return json_; }

    // Columns of the terminal; 0 where standard output is none, and nothing is to be cut.
    unsigned width() const { return width_; }

    void write(std::string_view text);
    void line(std::string_view text);

    // On a terminal, writes what is gathered: a person watches it come.
    void show();

    // The text with the escape sequences of its style around it, where there is colour.
    std::string styled(std::string_view text, Style style) const;

    // Writes what is left and waits for the pager. To be called at the end of a command.
    void finish();

  private:
    static constexpr size_t kGathered = 1 << 16;

    void begin();
    static bool isWritten(std::string_view text);
    [[noreturn]] void fail() const;
    void flush();
    void waitForPager();

    bool json_;
    bool terminal_;
    bool colored_;
    bool paged_;
    bool begun_ = false;
    unsigned width_ = 0;
    pid_t pager_ = -1;
    std::string gathered_;
};

}  // namespace sonaprobe::scope
