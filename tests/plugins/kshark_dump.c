/* Opens files as KernelShark does, by a plugin, and prints what its views would show of each entry:
 *
 *     kshark_dump PLUGIN FILE...
 *
 * A line an entry, its fields between tabs: stream, time, processor, thread's number, task, event,
 * info, auxiliary info, and NAME=NUMBER for each field of the event that the entry has. */

#include <inttypes.h>
#include <kernelshark/libkshark.h>
#include <stdio.h>
#include <stdlib.h>

static void print_and_free(char* text) {
    printf("\t%s", text != NULL ? text : "(null)");
    free(text);
}

static void print_fields(const struct kshark_entry* entry) {
    char** names = NULL;
    const int count = kshark_get_all_event_field_names(entry, &names);
    for (int number = 0; number < count; ++number) {
        int64_t value = 0;
        if (kshark_get_event_field_type(entry, names[number]) != KS_INTEGER_FIELD) abort();
        if (kshark_read_event_field_int(entry, names[number], &value) == 0) {
            printf("\t%s=%" PRId64, names[number], value);
        }
        free(names[number]);
    }
    free(names);
}

static void print_entry(const struct kshark_entry* entry) {
    printf("%d\t%" PRId64 "\t%d\t%d", entry->stream_id, entry->ts, entry->cpu,
           kshark_get_pid(entry));
    print_and_free(kshark_get_task(entry));
    print_and_free(kshark_get_event_name(entry));
    print_and_free(kshark_get_info(entry));
    print_and_free(kshark_get_aux_info(entry));
    print_fields(entry);
    putchar('\n');
}

static int wrong = 0;

/* As KernelShark's other plugins read fields: of the record, while entries are made. */
static void compare_fields(struct kshark_data_stream* stream, void* record,
                           struct kshark_entry* entry) {
    char** names = NULL;
    const int count = kshark_get_all_event_field_names(entry, &names);
    for (int number = 0; number < count; ++number) {
        int64_t values[2] = {0, 0};
        if (kshark_read_record_field_int(stream, record, names[number], &values[0]) !=
                kshark_read_event_field_int(entry, names[number], &values[1]) ||
            values[0] != values[1]) {
            ++wrong;
        }
        free(names[number]);
    }
    free(names);
}

/* What holds for each stream, whatever is in it; fields are compared from here on. */
static void check_stream(struct kshark_context* context, int sd) {
    struct kshark_data_stream* stream = kshark_get_data_stream(context, sd);
    int* ids = kshark_get_all_event_ids(stream);
    for (int number = 0; number < stream->n_events; ++number) {
        char* name = kshark_event_from_id(sd, ids[number]);
        if (name == NULL || kshark_find_event_id(stream, name) != ids[number]) ++wrong;
        free(name);
        kshark_register_event_handler(stream, ids[number], compare_fields);
    }
    free(ids);
}

int main(int argc, char** argv) {
    struct kshark_context* context = NULL;
    if (argc < 3 || !kshark_instance(&context)) return 2;
    if (kshark_register_plugin(context, "sonaprobe", argv[1]) == NULL) {
        fprintf(stderr, "%s: no plugin\n", argv[1]);
        return 2;
    }
    int status = 0;
    for (int number = 2; number < argc; ++number) {
        const int sd = kshark_open(context, argv[number]);
        if (sd < 0) {
            fprintf(stderr, "%s: %s\n", argv[number], strerror(-sd));
            status = 1;
        } else {
            check_stream(context, sd);
        }
    }
    struct kshark_entry** rows = NULL;
    const ssize_t count = context->n_streams > 0 ? kshark_load_all_entries(context, &rows) : 0;
    for (ssize_t row = 0; row < count; ++row) {
        print_entry(rows[row]);
    }
    for (ssize_t row = 0; row < count; ++row) free(rows[row]);
    free(rows);
    kshark_close_all(context);
    kshark_free(context);
    if (wrong > 0) fprintf(stderr, "%d names or fields are wrong\n", wrong);
    return wrong > 0 ? 1 : status;
}
