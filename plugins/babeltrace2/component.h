/* The methods of the source component class `raw`, as Babeltrace's macros take them. */

#ifndef SONAPROBE_BABELTRACE2_COMPONENT_H
#define SONAPROBE_BABELTRACE2_COMPONENT_H

#include <babeltrace2/babeltrace.h>

#ifdef __cplusplus
extern "C" {
#endif

bt_component_class_initialize_method_status sonaprobeRawInitialize(
    bt_self_component_source* self, bt_self_component_source_configuration* configuration,
    const bt_value* parameters, void* data);
void sonaprobeRawFinalize(bt_self_component_source* self);
bt_component_class_query_method_status sonaprobeRawQuery(bt_self_component_class_source* self,
                                                         bt_private_query_executor* executor,
                                                         const char* object,
                                                         const bt_value* parameters, void* data,
                                                         const bt_value** result);
bt_message_iterator_class_initialize_method_status sonaprobeRawIteratorInitialize(
    bt_self_message_iterator* self, bt_self_message_iterator_configuration* configuration,
    bt_self_component_port_output* port);
void sonaprobeRawIteratorFinalize(bt_self_message_iterator* self);
bt_message_iterator_class_next_method_status sonaprobeRawIteratorNext(
    bt_self_message_iterator* self, bt_message_array_const messages, uint64_t capacity,
    uint64_t* count);
bt_message_iterator_class_can_seek_beginning_method_status sonaprobeRawIteratorCanSeekBeginning(
    bt_self_message_iterator* self, bt_bool* can);
bt_message_iterator_class_seek_beginning_method_status sonaprobeRawIteratorSeekBeginning(
    bt_self_message_iterator* self);

#ifdef __cplusplus
}
#endif

#endif
