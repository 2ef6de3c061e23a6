// The source component class `raw`: its parameters, its inputs, and errors for Babeltrace to tell.

#include "babeltrace2/component.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "babeltrace2/messages.h"
#include "common/likeness.h"

namespace sonaprobe::plugins {
namespace {

// So that no time overflows, of seconds as of nanoseconds.
constexpr int64_t kMostOffset = 4'000'000'000;

// The component's own data; ports point at their input.
struct Source {
    std::vector<std::string> inputs;
    ClockOptions clock;
};

// The complaint about parameters, or none.
std::string readParameters(const bt_value* parameters, Source& source) {
    const auto entry = [&](const char* name) {
        return bt_value_map_borrow_entry_value_const(parameters, name);
    };
    const bt_value* inputs = entry("inputs");
    if (inputs == nullptr || !bt_value_is_array(inputs) || bt_value_array_is_empty(inputs)) {
        return "parameter `inputs` must be an array of one file or more";
    }
    for (uint64_t number = 0; number < bt_value_array_get_length(inputs); ++number) {
        const bt_value* input = bt_value_array_borrow_element_by_index_const(inputs, number);
        if (!bt_value_is_string(input)) return "parameter `inputs` must hold strings";
        source.inputs.emplace_back(bt_value_string_get(input));
    }
    const auto readInteger = [&](const char* name, int64_t& into) {
        const bt_value* value = entry(name);
        if (value == nullptr) return true;
        if (!bt_value_is_signed_integer(value)) return false;
        into = bt_value_integer_signed_get(value);
        return into >= -kMostOffset && into <= kMostOffset;
    };
    if (!readInteger("clock-class-offset-s", source.clock.offsetSeconds) ||
        !readInteger("clock-class-offset-ns", source.clock.offsetNanoseconds)) {
        return "parameters `clock-class-offset-s` and `-ns` must be integers from -4000000000 to "
               "4000000000";
    }
    if (const bt_value* force = entry("force-clock-class-origin-unix-epoch"); force != nullptr) {
        if (!bt_value_is_bool(force)) {
            return "parameter `force-clock-class-origin-unix-epoch` must be a boolean";
        }
        source.clock.isUnixEpoch = bt_value_bool_get(force) != BT_FALSE;
    }
    return "";
}

// What speaks against reading a file, or nothing. Pipes are taken as they are.
std::string complaintAbout(const std::string& path) {
    sonaprobe_reader* opened = nullptr;
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return path + ": " + std::strerror(errno);
    if (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)) return "";
    const int result = sonaprobe_open_file(&opened, path.c_str());
    const Reader reader(opened);
    const sonaprobe_event* event = nullptr;
    const int read = result == 0 ? sonaprobe_next(opened, &event) : result;
    if (read < 0) return path + ": " + std::strerror(-read);
    if (likenessOf(path.c_str()) > 0) return "";
    return path +
           ": this is no trace of audio drivers, or a broken one: `sonascope info` says more";
}

Messages& messagesOf(bt_self_message_iterator* self) {
    return *static_cast<Messages*>(bt_self_message_iterator_get_data(self));
}

void tellError(bt_self_message_iterator* self, const std::string& path, int64_t error) {
    BT_CURRENT_THREAD_ERROR_APPEND_CAUSE_FROM_MESSAGE_ITERATOR(
        self, "%s: %s", path.c_str(), std::strerror(static_cast<int>(-error)));
}

}  // namespace
}  // namespace sonaprobe::plugins

using namespace sonaprobe::plugins;

bt_component_class_initialize_method_status sonaprobeRawInitialize(
    bt_self_component_source* self, bt_self_component_source_configuration* /*configuration*/,
    const bt_value* parameters, void* /*data*/) {
    bt_self_component* component = bt_self_component_source_as_self_component(self);
    try {
        auto source = std::make_unique<Source>();
        std::string complaint = readParameters(parameters, *source);
        for (const std::string& input : source->inputs) {
            if (complaint.empty()) complaint = complaintAbout(input);
        }
        if (!complaint.empty()) {
            BT_CURRENT_THREAD_ERROR_APPEND_CAUSE_FROM_COMPONENT(component, "%s", complaint.c_str());
            return BT_COMPONENT_CLASS_INITIALIZE_METHOD_STATUS_ERROR;
        }
        for (size_t number = 0; number < source->inputs.size(); ++number) {
            std::string& input = source->inputs[number];
            check(bt_self_component_source_add_output_port(
                self, ("out" + std::to_string(number)).c_str(), &input, nullptr));
        }
        bt_self_component_set_data(component, source.release());
        return BT_COMPONENT_CLASS_INITIALIZE_METHOD_STATUS_OK;
    } catch (const std::exception&) {
        return BT_COMPONENT_CLASS_INITIALIZE_METHOD_STATUS_MEMORY_ERROR;
    }
}

void sonaprobeRawFinalize(bt_self_component_source* self) {
    bt_self_component* component = bt_self_component_source_as_self_component(self);
    delete static_cast<Source*>(bt_self_component_get_data(component));
}

bt_component_class_query_method_status sonaprobeRawQuery(bt_self_component_class_source* /*self*/,
                                                         bt_private_query_executor* /*executor*/,
                                                         const char* object,
                                                         const bt_value* parameters, void* /*data*/,
                                                         const bt_value** result) {
    if (std::strcmp(object, "babeltrace.support-info") != 0) {
        return BT_COMPONENT_CLASS_QUERY_METHOD_STATUS_UNKNOWN_OBJECT;
    }
    const auto textOf = [&](const char* name) {
        const bt_value* value = bt_value_map_borrow_entry_value_const(parameters, name);
        return value != nullptr && bt_value_is_string(value) ? bt_value_string_get(value) : "";
    };
    try {
        const bool isFile = std::strcmp(textOf("type"), "file") == 0;
        *result = bt_value_real_create_init(isFile ? likenessOf(textOf("input")) : 0);
    } catch (const std::exception&) {
        return BT_COMPONENT_CLASS_QUERY_METHOD_STATUS_MEMORY_ERROR;
    }
    return *result != nullptr ? BT_COMPONENT_CLASS_QUERY_METHOD_STATUS_OK
                              : BT_COMPONENT_CLASS_QUERY_METHOD_STATUS_MEMORY_ERROR;
}

bt_message_iterator_class_initialize_method_status sonaprobeRawIteratorInitialize(
    bt_self_message_iterator* self, bt_self_message_iterator_configuration* configuration,
    bt_self_component_port_output* port) {
    bt_self_component* component = bt_self_message_iterator_borrow_component(self);
    const auto& source = *static_cast<const Source*>(bt_self_component_get_data(component));
    const auto& input = *static_cast<const std::string*>(bt_self_component_port_get_data(
        bt_self_component_port_output_as_self_component_port(port)));
    try {
        auto messages = std::make_unique<Messages>(self, input, source.clock);
        if (const int error = messages->begin(); error < 0) {
            tellError(self, input, error);
            return BT_MESSAGE_ITERATOR_CLASS_INITIALIZE_METHOD_STATUS_ERROR;
        }
        // Babeltrace seeks a time by itself, from the beginning on.
        bt_self_message_iterator_configuration_set_can_seek_forward(configuration, BT_TRUE);
        bt_self_message_iterator_set_data(self, messages.release());
        return BT_MESSAGE_ITERATOR_CLASS_INITIALIZE_METHOD_STATUS_OK;
    } catch (const std::exception&) {
        return BT_MESSAGE_ITERATOR_CLASS_INITIALIZE_METHOD_STATUS_MEMORY_ERROR;
    }
}

void sonaprobeRawIteratorFinalize(bt_self_message_iterator* self) {
    delete static_cast<Messages*>(bt_self_message_iterator_get_data(self));
}

bt_message_iterator_class_next_method_status sonaprobeRawIteratorNext(
    bt_self_message_iterator* self, bt_message_array_const messages, uint64_t capacity,
    uint64_t* count) {
    try {
        const int64_t result = messagesOf(self).next(messages, capacity);
        if (result == 0) return BT_MESSAGE_ITERATOR_CLASS_NEXT_METHOD_STATUS_END;
        if (result < 0) {
            tellError(self, messagesOf(self).path(), result);
            return BT_MESSAGE_ITERATOR_CLASS_NEXT_METHOD_STATUS_ERROR;
        }
        *count = static_cast<uint64_t>(result);
        return BT_MESSAGE_ITERATOR_CLASS_NEXT_METHOD_STATUS_OK;
    } catch (const std::exception&) {
        return BT_MESSAGE_ITERATOR_CLASS_NEXT_METHOD_STATUS_MEMORY_ERROR;
    }
}

bt_message_iterator_class_can_seek_beginning_method_status sonaprobeRawIteratorCanSeekBeginning(
    bt_self_message_iterator* self, bt_bool* can) {
    struct stat status {};
    *can = ::stat(messagesOf(self).path().c_str(), &status) == 0 && S_ISREG(status.st_mode);
    return BT_MESSAGE_ITERATOR_CLASS_CAN_SEEK_BEGINNING_METHOD_STATUS_OK;
}

bt_message_iterator_class_seek_beginning_method_status sonaprobeRawIteratorSeekBeginning(
    bt_self_message_iterator* self) {
    try {
        if (const int error = messagesOf(self).begin(); error < 0) {
            tellError(self, messagesOf(self).path(), error);
            return BT_MESSAGE_ITERATOR_CLASS_SEEK_BEGINNING_METHOD_STATUS_ERROR;
        }
        return BT_MESSAGE_ITERATOR_CLASS_SEEK_BEGINNING_METHOD_STATUS_OK;
    } catch (const std::exception&) {
        return BT_MESSAGE_ITERATOR_CLASS_SEEK_BEGINNING_METHOD_STATUS_MEMORY_ERROR;
    }
}
