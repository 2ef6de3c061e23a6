/* The Babeltrace 2 plugin `sonaprobe`. Its registration is C: Babeltrace's macros are no C++. */

#include "babeltrace2/component.h"

static const char help[] =
    "Reads raw files of audio driver traces, as `sonaprobe -w` keeps them.\n"
    "\n"
    "Parameters:\n"
    "\n"
    "  inputs=[FILE, ...] [array of strings]\n"
    "      The files. Each has an output port.\n"
    "  clock-class-offset-s=SEC, clock-class-offset-ns=NS [optional integers]\n"
    "      Are added to all times: from -4000000000 to 4000000000.\n"
    "  force-clock-class-origin-unix-epoch=yes [optional boolean]\n"
    "      Times count from 1970, as those of traces that are to be merged with them.\n";

BT_PLUGIN_MODULE();
BT_PLUGIN(sonaprobe);
BT_PLUGIN_DESCRIPTION("Traces of audio drivers");
BT_PLUGIN_AUTHOR("sonaprobe developers");
BT_PLUGIN_LICENSE("see /usr/share/doc/sonaprobe-babeltrace2/copyright");
BT_PLUGIN_SOURCE_COMPONENT_CLASS(raw, sonaprobeRawIteratorNext);
BT_PLUGIN_SOURCE_COMPONENT_CLASS_DESCRIPTION(raw, "Read raw files of audio driver traces");
BT_PLUGIN_SOURCE_COMPONENT_CLASS_HELP(raw, help);
BT_PLUGIN_SOURCE_COMPONENT_CLASS_INITIALIZE_METHOD(raw, sonaprobeRawInitialize);
BT_PLUGIN_SOURCE_COMPONENT_CLASS_FINALIZE_METHOD(raw, sonaprobeRawFinalize);
BT_PLUGIN_SOURCE_COMPONENT_CLASS_QUERY_METHOD(raw, sonaprobeRawQuery);
BT_PLUGIN_SOURCE_COMPONENT_CLASS_MESSAGE_ITERATOR_CLASS_INITIALIZE_METHOD(
    raw, sonaprobeRawIteratorInitialize);
BT_PLUGIN_SOURCE_COMPONENT_CLASS_MESSAGE_ITERATOR_CLASS_FINALIZE_METHOD(
    raw, sonaprobeRawIteratorFinalize);
BT_PLUGIN_SOURCE_COMPONENT_CLASS_MESSAGE_ITERATOR_CLASS_SEEK_BEGINNING_METHODS(
    raw, sonaprobeRawIteratorSeekBeginning, sonaprobeRawIteratorCanSeekBeginning);
