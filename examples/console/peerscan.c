/*
 * PeerScan.cgi: a second, small application of the sample console. Another
 * page calls it with two file names: the query file, which holds the
 * caller's settings as name=value pairs joined by "&", and the file that
 * receives the answer, an HTML fragment for the calling page.
 */
#include <stdio.h>
#include <string.h>

/* The value of name in query, up to the next "&", copied into out. */
static void QueryValue(const char *query, const char *name, char *out, size_t size) {
    size_t length = strlen(name);
    out[0] = '\0';
    for (const char *at = query; at != NULL; at = strchr(at, '&')) {
        if (*at == '&') ++at;
        if (strncmp(at, name, length) == 0 && at[length] == '=') {
            snprintf(out, size, "%.*s", (int)strcspn(at + length + 1, "&"), at + length + 1);
            return;
        }
    }
}

int main(int argc, char **argv) {
    if (argc != 3) return 2;
    char query[4096] = "", origin[64], application[64];
    FILE *in = fopen(argv[1], "r");
    if (in == NULL) return 1;
    size_t read = fread(query, 1, sizeof query - 1, in);
    query[read] = '\0';
    fclose(in);
    QueryValue(query, "Application", application, sizeof application);
    QueryValue(query, "Origin", origin, sizeof origin);
    FILE *out = fopen(argv[2], "w");
    if (out == NULL) return 1;
    fprintf(out, "no peers found for %s (asked by %s)", application, origin);
    return fclose(out) == 0 ? 0 : 1;
}
