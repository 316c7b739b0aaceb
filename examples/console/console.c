/*
 * console.cgi: the console's overview application as a CGI program.
 *
 * It reads the request (the query string, or posted form data), finds the
 * application named in it, reads that application's definition, assigns
 * the request to the definition's entries and writes the page the request
 * asks for.
 *
 * Whatever the library writes before the page (messages about a faulty
 * definition) is held until the HTTP header has gone out, so that it can
 * never be taken for a header line. A request that saves a setting
 * ("SetIniValue", "SaveSettings") must carry the form token of the browser's session, which
 * only the console's own settings form knows.
 */
#define _GNU_SOURCE
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/random.h>
#include <unistd.h>

#include "kx_input.h"
#include "kx_profile.h"
#include "kx_list.h"
#include "kx_template.h"
#include "traps.h"

/* Pages live in this folder beside the program; a request names only the
 * page's file name, never a path. */
static const char kPageFolder[] = "pages/";
static const char kDefaultPage[] = "main.htm";

/* The session's form token travels in this cookie and in the form field of
 * the same name. */
static const char kTokenName[] = "FormToken";
enum { kTokenBytes = 16, kTokenLength = 2 * kTokenBytes };

/* The form token of this request: the cookie's, or a new one (fresh is 1). */
struct Token {
    char text[kTokenLength + 1];
    int fresh;
};

static void Header(const char *status, const struct Token *token) {
    if (status != NULL) printf("Status: %s\r\n", status);
    if (token != NULL && token->fresh)
        printf("Set-Cookie: %s=%s; Path=/; HttpOnly; SameSite=Strict\r\n", kTokenName, token->text);
    printf("Content-Type: text/html; charset=ISO-8859-1\r\n\r\n");
}

static int Fail(const char *status, const char *message) {
    Header(status, NULL);
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
 * name, or NULL when that is no plain application name. */
static char *ApplicationName(const char *request) {
    char *encoded = RequestValue(request, NULL);
    if (encoded == NULL) return NULL;
    char *decoded = ServerDecoding(encoded);
    free(encoded);
    const char *base = HTMLBasename(decoded);
    char *name = KXIsApplicationName(base) ? UtilsErzeugeText(base, (int)strlen(base)) : NULL;
    free(decoded);
    return name;
}

/* The token of the cookie "FormToken=" when it is well formed, else a new
 * random one. */
static void SessionToken(struct Token *token) {
    const char *cookies = getenv("HTTP_COOKIE");
    const char *at = cookies != NULL ? strstr(cookies, "FormToken=") : NULL;
    if (at != NULL && (at == cookies || at[-1] == ' ' || at[-1] == ';')) {
        at += sizeof kTokenName;
        const size_t length = strspn(at, "0123456789abcdef");
        if (length == kTokenLength && (at[length] == '\0' || at[length] == ';')) {
            memcpy(token->text, at, kTokenLength);
            token->text[kTokenLength] = '\0';
            token->fresh = 0;
            return;
        }
    }
    static const char kHexDigits[] = "0123456789abcdef";
    unsigned char bytes[kTokenBytes] = {0};
    if (getrandom(bytes, sizeof bytes, 0) != (ssize_t)sizeof bytes) abort();
    for (int i = 0; i < kTokenBytes; ++i) {
        token->text[2 * i] = kHexDigits[bytes[i] >> 4];
        token->text[2 * i + 1] = kHexDigits[bytes[i] & 15];
    }
    token->text[kTokenLength] = '\0';
    token->fresh = 1;
}

/* A request that saves (into the definition or the operator's profile) or
 * changes the trap store must carry the session's token in its form. */
static int SaveAllowed(const char *request, const struct Token *token) {
    if (strstr(request, "SetIniValue") == NULL && strstr(request, "SaveSettings") == NULL &&
        strstr(request, "TrapAction") == NULL)
        return 1;
    char *sent = RequestValue(request, kTokenName);
    const int same = sent != NULL && !token->fresh && strcmp(sent, token->text) == 0;
    free(sent);
    return same;
}

/* pages/ + the base name of the page the definition or the request names. */
static char *PagePath(EingabeElement *list, int count) {
    int index = EingabewertIndex("Page", list, count);
    const char *page = kDefaultPage;
    if (index < count) {
        const char *current = list[index].Wert ? list[index].Wert + list[index].WertPosition : list[index].Vorgabe;
        if (current != NULL && *HTMLBasename(current) != '\0') page = HTMLBasename(current);
    }
    const size_t length = strlen(page);
    char *path = malloc(sizeof kPageFolder + length);
    if (path != NULL) {
        memcpy(path, kPageFolder, sizeof kPageFolder - 1);
        memcpy(path + sizeof kPageFolder - 1, page, length + 1);
    }
    return path;
}

/* The overview page's settings, kept per operator in their profile. */
static const char *kProfileSettings[] = {"RefreshSeconds", "Columns"};
/* The columns of the server table, in order, as "Columns" names them. */
static const char *const kColumns[] = {"Server", "Id", "State", "Uptime", "Memory", "Free", "Boot", "Groups"};

static const char *Current(EingabeElement *list, int count, const char *name) {
    const int index = EingabewertIndex(name, list, count);
    if (index >= count) return NULL;
    return list[index].Wert ? list[index].Wert + list[index].WertPosition : list[index].Vorgabe;
}

/* The page's meta refresh reloads this very page after "RefreshSeconds":
 * anything but a plain number of seconds (a "0; url=..." among them) would
 * send the browser elsewhere, so such a value gives way to the default
 * before it is saved or shown. */
static const char kRefreshDefault[] = "60";
static const size_t kRefreshDigits = 5;

static void PlainRefresh(EingabeElement *list, int count) {
    const char *seconds = Current(list, count, "RefreshSeconds");
    if (seconds == NULL) return;
    const size_t digits = strspn(seconds, "0123456789");
    if (digits == 0 || digits > kRefreshDigits || seconds[digits] != '\0')
        SetEingabeWert(count, list, "RefreshSeconds", kRefreshDefault);
}

/* The signed-in operator has a user id (a new one on the first page) and a
 * profile named after them: a posted "SaveSettings" writes the page's
 * settings into it, every other request reads them from it. The library
 * refuses an operator name that would leave the user's directory. */
static void OperatorProfile(EingabeElement *list, int count) {
    SetEingabeWert(count, list, "Profile", Current(list, count, "Operator"));
    if (CreateUID(count, list) < 1) return;
    const char *save = Current(list, count, "SaveSettings");
    if (save != NULL && *save != '\0') {
        WriteIniFile(count, list, "|", "w", 2, kProfileSettings, NULL, NULL, NULL);
        return;
    }
    /* An operator's first page finds no profile yet: nothing to read, and no
     * error to show. */
    char *path = NULL;
    if (CreateUIDFIle(count, list, 0, &path) == 0 && access(path, F_OK) == 0) ReadIniFile(count, list, path);
    free(path);
}

/* True when the blank-separated list names word. */
static int Names(const char *list, const char *word) {
    const size_t length = strlen(word);
    for (const char *p = list; p != NULL && *p != '\0'; p += strcspn(p, " ")) {
        p += strspn(p, " ");
        if (strncmp(p, word, length) == 0 && (p[length] == ' ' || p[length] == '\0')) return 1;
    }
    return 0;
}

/* "ColumnStyle": a rule hiding each column that "Columns" leaves out. */
static void ColumnStyle(EingabeElement *list, int count) {
    const char *shown = Current(list, count, "Columns");
    char style[1024] = "";
    size_t used = 0;
    for (size_t i = 0; i < sizeof kColumns / sizeof kColumns[0] && used < sizeof style; ++i)
        if (!Names(shown, kColumns[i]))
            used += (size_t)snprintf(style + used, sizeof style - used,
                                     ".servers td:nth-child(%zu),.servers th:nth-child(%zu){display:none}",
                                     i + 1, i + 1);
    SetEingabeWert(count, list, "ColumnStyle", style);
}

/* Where the library's output goes until the header is out: a stream that
 * appends to a heap text. A good request writes nothing there, and such a
 * stream takes no buffer before its first write. */
struct Held {
    FILE *stream;
    char *text;
    size_t size;
};

static ssize_t HoldPiece(void *cookie, const char *piece, size_t size) {
    struct Held *held = cookie;
    char *grown = realloc(held->text, held->size + size);
    if (grown == NULL) return -1;
    memcpy(grown + held->size, piece, size);
    held->text = grown;
    held->size += size;
    return (ssize_t)size;
}

static void Hold(struct Held *held) {
    held->text = NULL;
    held->size = 0;
    held->stream = fopencookie(held, "w", (cookie_io_functions_t){.write = HoldPiece});
    _Utilsfpout = held->stream != NULL ? held->stream : stdout;
}

/* Ends holding; what was held stays in held->text. */
static void Release(struct Held *held) {
    if (held->stream != NULL) fclose(held->stream);
    _Utilsfpout = stdout;
}

/* Reads the definition and assigns the request; returns the status of a
 * failure, or NULL. */
static const char *Prepare(char *request, const char *program, struct Token *token, EingabeElement **list,
                           int *count) {
    char *application = ApplicationName(request);
    if (application == NULL) return "400 Bad Request";
    /* ErmittleEingabe2 records the definition file, so that "SetIniValue"
     * can write a submitted setting back into it. */
    const int unknown = ErmittleEingabe2(application, list, count, NULL, program, 0);
    free(application);
    if (unknown) return "404 Not Found";
    SessionToken(token);
    if (!SaveAllowed(request, token)) return "403 Forbidden";
    /* The request's name=value pairs become NUL-separated assignments. */
    const int assignments = ErmittleTextElemente(request, "&", NULL, NULL);
    WertzuweisungEingabe(assignments, request, count, list, "~");
    /* The form carries the session's token, whatever the request sent. */
    SetEingabeWert(*count, *list, kTokenName, token->text);
    PlainRefresh(*list, *count);
    OperatorProfile(*list, *count);
    PlainRefresh(*list, *count);
    ColumnStyle(*list, *count);
    const char *page = Current(*list, *count, "Page");
    if (page != NULL && strcmp(HTMLBasename(page), "traps.htm") == 0) TrapPage(*list, *count);
    return NULL;
}

int main(int argc, char **argv) {
    (void)argc;
    char *request = RequestText();
    EingabeElement *list = NULL;
    int count = 0;
    struct Token token = {{0}, 0};
    struct Held held;
    Hold(&held);
    const char *failure = Prepare(request, argv[0], &token, &list, &count);
    free(request);
    Release(&held);
    if (failure != NULL) {
        free(held.text);
        KXFreeEingabeList(list, count);
        if (strcmp(failure, "400 Bad Request") == 0)
            return Fail(failure, "The request names no application (Application=...).");
        if (strcmp(failure, "404 Not Found") == 0)
            return Fail(failure, "The application named in the request is not installed here.");
        return Fail(failure, "The settings form has expired: reload the page and save again.");
    }
    char *page = PagePath(list, count);
    Header(NULL, &token);
    if (held.text != NULL) fwrite(held.text, 1, held.size, stdout);
    free(held.text);
    /* The page goes to the same stream after the header, so a small page
     * leaves in one write with it; the library flushes the stream itself
     * before a program it calls writes to the page. */
    ErsetzeUndGebeHtmlDateiAus(page, NULL, iErsetzungsAnfang, iErsetzungsEnde, &count, &list);
    fflush(stdout);
    free(page);
    KXFreeEingabeList(list, count);
    return 0;
}
