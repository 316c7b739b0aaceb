/* The limit of a CGI request: a program that only writes a page it is
 * given, as one file read and one write. */
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char **argv) {
    FILE *in = argc > 1 ? fopen(argv[1], "rb") : NULL;
    if (in == NULL) return 1;
    static char page[1 << 20];
    const size_t size = fread(page, 1, sizeof page, in);
    fclose(in);
    return fwrite(page, 1, size, stdout) == size ? 0 : 1;
}
