/*
 * console.cgi: the console's overview application as a CGI program.
 *
 * It reads the request (the query string, or posted form data), finds the
 * application named in it, reads that application's definition, assigns
 * the request to the definition's entries and writes the page the request
 * asks for.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "kx_input.h"
#include "kx_list.h"
#include "kx_template.h"

/* Pages live in this folder beside the program; a request names only the
 * page's file name, never a path. */
static const char kPageFolder[] = "pages/";
static const char kDefaultPage[] = "main.htm";

static void Header(const char *status) {
    if (status != NULL) printf("Status: %s\r\n", status);
    printf("Content-Type: text/html; charset=ISO-8859-1\r\n\r\n");
}

static int Fail(const char *status, const char *message) {
    Header(status);
    printf("<!DOCTYPE html>\n<html><head><title>Console</title></head>\n"
           "<body><h1>%s</h1><p>%s</p></body></html>\n", status, message);
    return 0;
}

/* The request text: posted data for POST, the query string otherwise. The
 * result is a heap text. */
static char *RequestText(void) {
    const char *method = getenv("REQUEST_METHOD");
    if (method != NULL && strcmp(method, "POST") == 0) {
        /* Sized from the announced length, the buffer needs no growing. */
        const char *announced = getenv("CONTENT_LENGTH");
        const long size = announced ? strtol(announced, NULL, 10) : 0;
        int length = 0;
        char *posted = UtilsGetPostedInformation(size > 0 && size < (64L << 20) ? (int)size + 1 : 0, NULL, &length);
        return posted != NULL ? posted : UtilsErzeugeText("", 0);
    }
    const char *query = getenv("QUERY_STRING");
    return UtilsErzeugeText(query ? query : "", query ? (int)strlen(query) : 0);
}

/* The value of a key in the request, up to the next "&", as a heap text. */
static char *RequestValue(const char *request, const char *key) {
    const char *value = PositioniereAufSchluesselwortWert(request, key, NULL);
    return value != NULL ? UtilsErzeugeText(value, (int)strcspn(value, "&")) : NULL;
}

/* The application named by the request, decoded and reduced to its base
 * name, or NULL. It must begin with a letter or digit: a text that begins
 * with one of the definition marker bytes ("~", "|", "%", ...) would be
 * taken for a definition in memory instead of a name. */
static char *ApplicationName(const char *request) {
    char *encoded = RequestValue(request, NULL);
    if (encoded == NULL) return NULL;
    char *decoded = ServerDecoding(encoded);
    free(encoded);
    const char *base = HTMLBasename(decoded);
    const char first = base[0];
    char *name = NULL;
    if ((first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z') || (first >= '0' && first <= '9'))
        name = UtilsErzeugeText(base, (int)strlen(base));
    free(decoded);
    return name;
}

/* pages/ + the base name of the page the definition or the request names. */
static char *PagePath(EingabeElement *list, int count) {
    int index = EingabewertIndex("Page", list, count);
    const char *page = kDefaultPage;
    if (index < count) {
        const char *current = list[index].Wert ? list[index].Wert + list[index].WertPosition : list[index].Vorgabe;
        if (current != NULL && *HTMLBasename(current) != '\0') page = HTMLBasename(current);
    }
    char *path = malloc(sizeof kPageFolder + strlen(page));
    if (path != NULL) sprintf(path, "%s%s", kPageFolder, page);
    return path;
}

int main(int argc, char **argv) {
    (void)argc;
    char *request = RequestText();
    char *application = ApplicationName(request);
    if (application == NULL) {
        free(request);
        return Fail("400 Bad Request", "The request names no application (Application=...).");
    }
    EingabeElement *list = NULL;
    int count = 0;
    /* ErmittleEingabe2 records the definition file, so that "SetIniValue"
     * can write a submitted setting back into it. */
    const int unknown = ErmittleEingabe2(application, &list, &count, NULL, argv[0], 0);
    free(application);
    if (unknown) {
        KXFreeEingabeList(list, count);
        free(request);
        return Fail("404 Not Found", "The application named in the request is not installed here.");
    }
    /* The request's name=value pairs become NUL-separated assignments. */
    const int assignments = ErmittleTextElemente(request, "&", NULL, NULL);
    WertzuweisungEingabe(assignments, request, &count, &list, "~");
    char *page = PagePath(list, count);
    Header(NULL);
    fflush(stdout);
    ErsetzeUndGebeHtmlDateiAus(page, NULL, iErsetzungsAnfang, iErsetzungsEnde, &count, &list);
    fflush(_Utilsfpout ? _Utilsfpout : stdout);
    free(page);
    KXFreeEingabeList(list, count);
    free(request);
    return 0;
}
