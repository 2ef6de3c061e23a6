// The program as one would first write it, to be compared with: a record read, a column printed, a
// clock asked, all through the C library. Prints what sonaprobe -r prints, byte for byte but for
// the time of day, for the options below.
//
//   straightforward [-k] [-s] [-c] [-C] [-B] [-S] [-i] [-A] [-v] -r FILE

#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

struct Record {
    uint64_t timestamp, arg1, arg2, arg3, arg4, arg5;
    uint32_t debugid, cpuid;
    uint64_t reserved;
};

struct Header {
    uint64_t timestamp, thread;
    uint32_t debugid, cpuid;
};

static int kernelTime, localTime = 1, codes, cpu, basic, noSeparator, noIndent, server, verbose;
static double divisor = 1000.0;
static int depth;

static uint64_t elapsedSeconds(uint64_t earlier, uint64_t later) {
    return (uint64_t)((double)(later - earlier) / divisor) / 1000000;
}

static const char* timeText(uint64_t timestamp, char text[44]) {
    static long long last, delta;
    const double microseconds = (double)timestamp / divisor;
    delta = last != 0 ? (long long)microseconds - last : 0;
    last = (long long)microseconds;
    text[0] = '\0';
    if (localTime) {
        const time_t now = time(NULL);
        snprintf(text, 44, "%-8.8s [%10lld][%10lld us]", ctime(&now) + 11, last, delta);
    } else if (kernelTime) {
        const unsigned long long u = (unsigned long long)microseconds;
        snprintf(text, 44, "%02llu%03llu.%03llu", u / 1000000 % 60, u / 1000 % 1000, u % 1000);
    }
    return text;
}

static unsigned qualifierOf(const struct Record* r) { return r->debugid & 3; }

static void indent(void) {
    for (int i = 0; i < depth; i++) putchar(' ');
}

static void printDirection(unsigned qualifier) {
    fprintf(stdout, "%s ", qualifier == 1 ? "->" : qualifier == 2 ? "<-" : "  ");
    if (noIndent || (qualifier == 2 && depth == 0)) return;
    if (qualifier == 2) depth--;
    indent();
    if (qualifier == 1) depth++;
}

static int printPrefix(const struct Header* header, const char* group, const char* method,
                       uint64_t object) {
    char text[44];
    char name[74];
    timeText(header->timestamp, text);
    if (localTime || kernelTime) fprintf(stdout, "%s ", text);
    if (cpu) fprintf(stdout, "%-2u ", header->cpuid);
    fprintf(stdout, "0x%08llx ", (unsigned long long)header->thread);
    if (codes) fprintf(stdout, "0x%08x ", header->debugid);
    printDirection(header->debugid & 3);
    snprintf(name, sizeof name, "%s%s%s", group, "::", method);
    fprintf(stdout, noSeparator ? "%s " : "%-30s ", name);
    if (object != 0) fprintf(stdout, "(0x%16.16llx) ", (unsigned long long)object);
    return 1;
}

static void printWords(const struct Record* r, const char* thread) {
    fprintf(stdout, "%16llx  ", (unsigned long long)r->arg1);
    fprintf(stdout, "%16llx  ", (unsigned long long)r->arg2);
    fprintf(stdout, "%16llx  ", (unsigned long long)r->arg3);
    fprintf(stdout, "%16llx  ", (unsigned long long)r->arg4);
    fprintf(stdout, thread, (unsigned long long)r->arg5);
    fprintf(stdout, "  %2u\n", r->cpuid);
}

static void printUnclassified(const struct Record* r) {
    const unsigned qualifier = qualifierOf(r);
    char text[44];
    if (r->debugid >> 16 != 0x0524) return;
    fprintf(stdout, "%s ", timeText(r->timestamp, text));
    fprintf(stdout, "%s ", qualifier == 1 ? "<-" : qualifier == 2 ? "->" : "  ");
    fprintf(stdout, "F-0x%04x|%02u|%03u  ", r->debugid >> 16, r->debugid >> 10 & 0x3F,
            r->debugid >> 2 & 0xFF);
    printWords(r, "0x%16llx");
}

static void printBasic(const struct Record* r) {
    static uint64_t first, previous;
    if (first == 0) first = previous = r->timestamp;
    fprintf(stdout, "%10.1f ", (double)(r->timestamp - first) / 1000.0);
    fprintf(stdout, "%5.1f  ", (double)(r->timestamp - previous) / 1000.0);
    previous = r->timestamp;
    fprintf(stdout, "0x%08x  ", r->debugid);
    printWords(r, "0x%016llx");
}

#include "straightforward_rows.h"

static void dispatch(const struct Record* r) {
    const unsigned key = r->debugid & ~0x3FFU;
    if (basic) {
        printBasic(r);
    } else if (key == 0x21040000 ? server : key != 0x05240000) {
        decodeClass(key, r);
    }
}

static void printFile(FILE* file) {
    struct Record record;
    while (fread(&record, sizeof record, 1, file) == 1) {
        if (record.debugid == 0xFEEDFACE) {
            divisor = (double)record.timestamp;
            if (verbose) {
                printf("Found divisor %f as 0x%llx\n", divisor,
                       (unsigned long long)record.timestamp);
            }
        } else {
            dispatch(&record);
        }
    }
}

static void takeOption(int letter) {
    switch (letter) {
        case 'k': kernelTime = 1, localTime = 0; break;
        case 's': localTime = 0; break;
        case 'c': codes = 1; break;
        case 'C': cpu = 1; break;
        case 'B': basic = 1; break;
        case 'S': noSeparator = 1; break;
        case 'i': noIndent = 1; break;
        case 'A': server = 1; break;
        case 'v':
            verbose = 1;
            printf("Verbose mode ON\n");
            break;
        default: break;
    }
}

int main(int argc, char** argv) {
    const char* path = "";
    for (int letter; (letter = getopt(argc, argv, "kscCBSiAvr:")) != -1;) {
        if (letter == 'r') path = optarg;
        takeOption(letter);
    }
    FILE* file = fopen(path, "rb");
    if (file == NULL) {
        fprintf(stderr, "cannot read '%s'\n", path);
        return 1;
    }
    printFile(file);
    fclose(file);
    return 0;
}
