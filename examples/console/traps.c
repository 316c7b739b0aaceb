/*
 * The console's trap page (pages/traps.htm): the traps of the store, newest
 * first, one line per trap, or repeats of one trap from one server folded
 * into one line with their number and the time of the newest. The page's
 * buttons acknowledge a line (all of a folded line's traps), switch its log
 * state, relabel the traps whose MIB became known and prune the store by
 * the limits of the server-list database.
 *
 * The program hands the template its data as lists ("~" between values):
 * TrapIds (a line's identifiers, newest first, joined by ","), TrapNames,
 * TrapSeverityNames, TrapServers, TrapTexts, TrapAcks, TrapLogs,
 * TrapCounts, TrapTimes, TrapKinds ("known" or "unknown"); and TrapTotal,
 * TrapLines, TrapHidden, TrapMessage.
 */
#define _GNU_SOURCE
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <unistd.h>

#include "companion/libKXUtils.h"
#include "kx_input.h"
#include "kx_trap.h"
#include "traps.h"

/* A page shows at most this many lines; older traps are counted, not shown. */
enum { kMaxLines = 200 };
/* The fields of a list line of KXCreateUserValue (counted from 0). */
enum { kFieldName = 1, kFieldSeverity = 3, kFieldServer = 4, kFieldId = 13, kFieldText = 15, kFields = 16 };
/* Positions of the state characters in a trap file name. */
enum { kLogState = 7, kAckState = 8 };

static const char *const kSeverityNames[] = {"unknown", "critical", "major", "minor", "informational"};

struct Trap {
    const char *path;
    const char *base;
    unsigned long long id;
    int line; /* the line showing it, -1 when none does */
};

struct Store {
    char **paths;
    int count;
    struct Trap *traps;
    int heads[kMaxLines]; /* per line: the index of its newest trap */
    int lines;
    int hidden;
};

static const char *Value(EingabeElement *list, int count, const char *name) {
    const int index = EingabewertIndex(name, list, count);
    if (index >= count) return NULL;
    return list[index].Wert ? list[index].Wert + list[index].WertPosition : list[index].Vorgabe;
}

static void SetNumber(EingabeElement *list, int count, const char *name, long number) {
    char text[24];
    snprintf(text, sizeof text, "%ld", number);
    SetEingabeWert(count, list, name, text);
}

/* text + separator + piece (no separator in front of the first piece). */
static char *Append(char *text, const char *separator, const char *piece) {
    return text == NULL ? UtilsErzeugeText(piece, (int)strlen(piece)) : AddElement(text, separator, piece);
}

/* Sets the state of every trap of ids ("id,id,..."): one list of the store
 * serves all of them. */
static void SetStates(const char *ids, const char *state, const char *value) {
    char *copy = ids != NULL ? strdup(ids) : NULL;
    if (copy == NULL) return;
    KXListTrapfiles(NULL, NULL);
    char *rest = NULL;
    for (char *id = strtok_r(copy, ",", &rest); id != NULL; id = strtok_r(NULL, ",", &rest))
        if (id[strspn(id, "0123456789")] == '\0') KXTrapRenameTrapfile(state, NULL, value, id, 0);
    KXFreeListTrapfiles();
    free(copy);
}

/* Carries out the button the request names in "TrapAction". */
static void TrapAction(EingabeElement *list, int count) {
    const char *action = Value(list, count, "TrapAction");
    const char *ids = Value(list, count, "TrapId");
    if (action == NULL || *action == '\0') return;
    if (strcmp(action, "ack") == 0) SetStates(ids, "alarmack", "1");
    else if (strcmp(action, "logon") == 0) SetStates(ids, "log", "1");
    else if (strcmp(action, "logoff") == 0) SetStates(ids, "log", "0");
    else if (strcmp(action, "relabel") == 0) {
        char message[64];
        snprintf(message, sizeof message, "%d", KXAdaptTrapFileName(NULL));
        SetEingabeWert(count, list, "TrapRelabelled", message);
    } else if (strcmp(action, "prune") == 0) {
        KXProcessTrapAgeDelete(NULL, "SETTINGS", "Value?Name=TrapMaxAge", NULL, NULL);
        KXProcessTrapMaxNumDelete(NULL, "SETTINGS", "Value?Name=TrapMaxNumber", NULL, NULL);
        SetEingabeWert(count, list, "TrapPruned", "1");
    }
}

/* Newest first; the name decides between traps of the same second. */
static int NewestFirst(const void *a, const void *b) {
    const struct Trap *x = a, *y = b;
    if (x->id != y->id) return x->id < y->id ? 1 : -1;
    return strcmp(x->base, y->base);
}

static int LoadTraps(struct Store *store) {
    char *directories[] = {TrapsDirectory};
    store->count = GTGetTrapFiles(1, directories, &store->paths, NULL);
    store->traps = calloc((size_t)store->count + 1, sizeof *store->traps);
    if (store->traps == NULL) return -1;
    for (int i = 0; i < store->count; ++i) {
        struct Trap *trap = &store->traps[i];
        trap->path = store->paths[i];
        const char *slash = strrchr(trap->path, '/');
        trap->base = slash != NULL ? slash + 1 : trap->path;
        const char *dot = GTGetUniqueIdentifier(trap->base);
        trap->id = dot != NULL ? strtoull(dot + 1, NULL, 10) : 0;
    }
    qsort(store->traps, (size_t)store->count, sizeof *store->traps, NewestFirst);
    return 0;
}

/* Gives each trap its line: a trap repeating the trap of a line from the
 * same server joins that line, unless the page shows every trap apart. */
static void FoldLines(struct Store *store, int unfold) {
    for (int i = 0; i < store->count; ++i) {
        struct Trap *trap = &store->traps[i];
        trap->line = -1;
        for (int l = 0; !unfold && l < store->lines && trap->line < 0; ++l)
            if (GTIsSameTrapAndServer(0, NULL, store->traps[store->heads[l]].base, trap->base, NULL) == 0)
                trap->line = l;
        if (trap->line >= 0) continue;
        if (store->lines == kMaxLines) {
            store->hidden++;
            continue;
        }
        store->heads[store->lines] = i;
        trap->line = store->lines++;
    }
}

/* The state character at position of a trap file name, '0' when missing. */
static char State(const char *base, int position) {
    char *dot = NULL;
    const int split = GTSplitTrapFileName(base, &dot);
    if (split < 0 || dot == NULL || dot - (base + split + 1) <= position) return '0';
    return base[split + 1 + position];
}

/* The list lines of the heads, made under a lock of the Traps directory:
 * the line order in "TrapLastSortInfo" and the lines read through it must
 * be this request's, not a concurrent one's. */
static char *ListLines(const struct Store *store) {
    char *order = NULL, *positions = NULL, *result = NULL;
    for (int l = 0; l < store->lines; ++l) {
        char number[24];
        snprintf(number, sizeof number, "%llu", store->traps[store->heads[l]].id);
        order = Append(order, "~", number);
        snprintf(number, sizeof number, "%d", l);
        positions = Append(positions, "|", number);
    }
    const int directory = open(TrapsDirectory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (order != NULL && positions != NULL && directory >= 0 && flock(directory, LOCK_EX) == 0) {
        char path[sizeof TrapsDirectory + 32];
        snprintf(path, sizeof path, "%s/TrapLastSortInfo", TrapsDirectory);
        if (KXUtilsWriteMemoryToFile2(path, order, (int)strlen(order)) > 0)
            KXCreateUserValue(positions, "\n", &result);
    }
    if (directory >= 0) close(directory); /* closing drops the lock */
    free(order);
    free(positions);
    return result;
}

/* The page's lists, one value per line. */
struct Lists {
    char *ids, *names, *severities, *servers, *texts, *acks, *logs, *counts, *times, *kinds;
};

/* A decoded field, "~" (the list divider) shown as "-". */
static char *Decoded(const char *field) {
    char *text = ServerDecoding(field);
    for (char *p = text; p != NULL && *p != '\0'; ++p)
        if (*p == '~') *p = '-';
    return text;
}

static void AddLine(struct Lists *lists, const struct Store *store, int line, char **fields) {
    char *ids = NULL, number[24];
    int count = 0, acknowledged = 1;
    for (int i = 0; i < store->count; ++i) {
        if (store->traps[i].line != line) continue;
        snprintf(number, sizeof number, "%llu", store->traps[i].id);
        ids = Append(ids, ",", number);
        count++;
        acknowledged &= State(store->traps[i].base, kAckState) != '0';
    }
    const struct Trap *head = &store->traps[store->heads[line]];
    char *name = Decoded(fields[kFieldName]), *server = Decoded(fields[kFieldServer]);
    char *text = Decoded(fields[kFieldText]);
    const int severity = atoi(fields[kFieldSeverity]);
    const char log[2] = {State(head->base, kLogState), '\0'};
    lists->ids = Append(lists->ids, "~", ids != NULL ? ids : "");
    lists->names = Append(lists->names, "~", name != NULL ? name : "");
    lists->severities = Append(lists->severities, "~", kSeverityNames[severity >= 0 && severity <= 4 ? severity : 0]);
    lists->servers = Append(lists->servers, "~", server != NULL ? server : "");
    lists->texts = Append(lists->texts, "~", text != NULL ? text : "");
    lists->acks = Append(lists->acks, "~", acknowledged ? "1" : "0");
    lists->logs = Append(lists->logs, "~", log);
    snprintf(number, sizeof number, "%d", count);
    lists->counts = Append(lists->counts, "~", number);
    snprintf(number, sizeof number, "%llu", head->id);
    lists->times = Append(lists->times, "~", number);
    lists->kinds = Append(lists->kinds, "~", name != NULL && strcmp(name, "UNKNOWN TRAP") == 0 ? "unknown" : "known");
    free(ids);
    free(name);
    free(server);
    free(text);
}

/* Cuts a list line into its fields in place; 0 when it has all of them. */
static int Fields(char *line, char **fields) {
    for (int f = 0; f < kFields; ++f) {
        char *end = strstr(line, ",,");
        if (end == NULL) return -1;
        *end = '\0';
        fields[f] = line;
        line = end + 2;
    }
    return 0;
}

static void ShowLines(EingabeElement *list, int count, const struct Store *store, char *lines) {
    struct Lists lists = {0};
    int line = 0, shown = 0;
    char *rest = NULL;
    for (char *text = lines != NULL ? strtok_r(lines, "\n", &rest) : NULL; text != NULL; text = strtok_r(NULL, "\n", &rest)) {
        char *fields[kFields];
        if (Fields(text, fields) != 0) continue;
        /* A trap that went away meanwhile has no line: match by identifier. */
        const unsigned long long id = strtoull(fields[kFieldId], NULL, 10);
        while (line < store->lines && store->traps[store->heads[line]].id != id) ++line;
        if (line == store->lines) break;
        AddLine(&lists, store, line++, fields);
        shown++;
    }
    char **values[] = {&lists.ids, &lists.names, &lists.severities, &lists.servers, &lists.texts,
                       &lists.acks, &lists.logs, &lists.counts, &lists.times, &lists.kinds};
    const char *names[] = {"TrapIds", "TrapNames", "TrapSeverityNames", "TrapServers", "TrapTexts",
                           "TrapAcks", "TrapLogs", "TrapCounts", "TrapTimes", "TrapKinds"};
    for (size_t i = 0; i < sizeof names / sizeof names[0]; ++i) {
        SetEingabeWert(count, list, names[i], *values[i] != NULL ? *values[i] : "");
        free(*values[i]);
    }
    SetNumber(list, count, "TrapTotal", store->count);
    SetNumber(list, count, "TrapLines", shown);
    SetNumber(list, count, "TrapHidden", store->hidden);
}

void TrapPage(EingabeElement *list, int count) {
    KXDetermineDirectories();
    TrapAction(list, count);
    struct Store store = {0};
    if (LoadTraps(&store) == 0) {
        const char *unfold = Value(list, count, "Unfold");
        FoldLines(&store, unfold != NULL && strcmp(unfold, "1") == 0);
        char *lines = ListLines(&store);
        ShowLines(list, count, &store, lines);
        free(lines);
    }
    free(store.traps);
    GTFreeRessources(store.count, store.paths);
}
