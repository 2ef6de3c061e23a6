// Writes an export's bytes.

#include "scope/export/destination.h"

namespace sonaprobe::scope {

Destination::Destination(const std::string& path, bool force, const FileBytes& input) {
    if (path.empty()) {
        output_.emplace(OutputOptions{.noPager = true, .color = ColorWhen::never});
    } else {
        file_.emplace(path, force, input);
    }
}

Sink Destination::sink() {
    if (file_) {
        return {.write =
                    [](void* file, const char* text, size_t length) {
                        static_cast<NewFile*>(file)->write(std::as_bytes(std::span(text, length)));
                    },
                .context = &*file_};
    }
    return {.write =
                [](void* output, const char* text, size_t length) {
                    static_cast<Output*>(output)->write({text, length});
                },
            .context = &*output_};
}

void Destination::finish() {
    if (file_) {
        file_->keep();
    } else {
        output_->finish();
    }
}

}  // namespace sonaprobe::scope
