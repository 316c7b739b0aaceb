/*
 * inventory.cgi: the console's inventory page. It lists the servers of the
 * console's server list (snmp/hwinv.dba) with their state read over SNMP,
 * and under each blade chassis the blades the chassis reports, named as the
 * server list names them. Popup alarms waiting in the popup queue are shown
 * as a banner until an operator acknowledges them (a POST empties the queue).
 */
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <unistd.h>

#include "companion/libDBAsciiAccess.h"
#include "companion/libForwarding.h"
#include "companion/libKXsnmp.h"
#include "kx_inventory.h"

static const char kDatabase[] = "snmp/hwinv.dba";
static const char kMibDirectory[] = "snmp/mibs";

/* q47ChassisStatus values, from 1 on. */
static const char *const kStates[] = {"ok", "degraded", "failed"};

static void Escaped(const char *text) {
    for (; text != NULL && *text != '\0'; ++text) {
        switch (*text) {
        case '<': fputs("&lt;", stdout); break;
        case '>': fputs("&gt;", stdout); break;
        case '&': fputs("&amp;", stdout); break;
        case '"': fputs("&quot;", stdout); break;
        default: putchar(*text);
        }
    }
}

static char *Column(const char *server, const char *column) {
    return KXGetDBValues(kDatabase, "SERVER_LIST", "ServerName", server, 0, column);
}

/* The queue emptied under the lock that raising a popup takes. */
static void AcknowledgePopups(void) {
    const int fd = open(ALARM_POPUP_QUEUE, O_WRONLY | O_CLOEXEC);
    if (fd < 0) return;
    if (flock(fd, LOCK_EX) == 0 && ftruncate(fd, 0) != 0) perror("inventory.cgi: popup queue");
    close(fd);
}

/* One banner line per waiting popup: its target and message. */
static void PopupBanner(void) {
    FILE *queue = fopen(ALARM_POPUP_QUEUE, "r");
    if (queue == NULL) return;
    char line[4096];
    int shown = 0;
    while (fgets(line, sizeof line, queue) != NULL) {
        char *target = strchr(line, '\t');
        char *message = target != NULL ? strchr(target + 1, '\t') : NULL;
        if (message == NULL) continue;
        *message++ = '\0';
        message[strcspn(message, "\n")] = '\0';
        if (!shown++) fputs("<div class=\"popups\"><ul>\n", stdout);
        fputs("<li><b>", stdout);
        Escaped(target + 1);
        fputs("</b> ", stdout);
        Escaped(message);
        fputs("</li>\n", stdout);
    }
    fclose(queue);
    if (shown)
        fputs("</ul><form method=\"post\" action=\"inventory.cgi\"><button name=\"Acknowledge\" value=\"1\">"
              "Acknowledge</button></form></div>\n", stdout);
}

/* The chassis state read over SNMP, or why there is none. */
static void State(const char *server) {
    KXSnmpVar *records = NULL;
    const int count = KXGetMibValues(server, "Q47.MIB", "q47Blade", "q47ChassisStatus", NULL, NULL, NULL, "walk", 0,
                                     NULL, kDatabase, &records);
    const int state = count > 0 ? atoi(records[0].Value) : 0;
    if (state >= 1 && state <= (int)(sizeof kStates / sizeof kStates[0]))
        printf("<span class=\"state %s\">%s</span>", kStates[state - 1], kStates[state - 1]);
    else if (count == KX_SNMPFILE_TIMEOUT)
        fputs("<span class=\"state silent\">no answer</span>", stdout);
    else
        printf("<span class=\"state unknown\">unknown (%d)</span>", count);
    KXSnmpFileFreeResources(records);
}

/* The blades the chassis reports, each with its name in the server list.
 * The chassis is asked at its address: by name, the blade discovery would
 * look it up in the default server list, not in this console's. */
static void Blades(const char *server, const char *address, DBAsciiAccessDatabase **handle) {
    char *community = Column(server, "Community");
    KXBladeEntry *blades = NULL;
    const int count = KXDetermineBlades(address, NULL, community != NULL && *community ? community : NULL, &blades);
    free(community);
    if (count <= 0) return;
    fputs("<ul class=\"blades\">\n", stdout);
    for (int i = 0; i < count; ++i) {
        KXBladeProperties *properties = NULL;
        KXDetermineBladeProperties(kDatabase, blades[i].Address, handle, &properties);
        printf("<li>%s %d: ", blades[i].Type, (int)blades[i].Number);
        Escaped(blades[i].Address);
        fputs(" <i>", stdout);
        Escaped(properties != NULL && properties->ServerName != NULL ? properties->ServerName : "not in the server list");
        fputs("</i></li>\n", stdout);
        free(properties);
    }
    fputs("</ul>\n", stdout);
    KXBladesStrFreeResources(count, &blades);
}

static void Server(const char *name, DBAsciiAccessDatabase **handle) {
    char *type = Column(name, "Type");
    char *address = Column(name, "NetAddress");
    fputs("<li class=\"server\"><b>", stdout);
    Escaped(name);
    fputs("</b> (", stdout);
    Escaped(type);
    fputs(", ", stdout);
    Escaped(address);
    fputs(") ", stdout);
    State(name);
    if (type != NULL && address != NULL && strcmp(type, KXBladeTypeName[0]) == 0) Blades(name, address, handle);
    fputs("</li>\n", stdout);
    free(type);
    free(address);
}

/* Every server of the list but the blades, which appear under their chassis. */
static void Servers(void) {
    DBAsciiAccessDatabase *database = NULL;
    char **names = NULL;
    const int count = DBAsciiAccessOpen(kDatabase, DBASCII_ACCESS_READ, &database) == 0
                          ? DBAsciiAccessGetAllEntries(database, "SERVER_LIST", "ServerName", &names, 0, 0)
                          : -1;
    if (count < 0) fputs("<p>The server list cannot be read.</p>\n", stdout);
    fputs("<ul class=\"inventory\">\n", stdout);
    for (int i = 0; i < count; ++i)
        if (strchr(names[i], '\\') == NULL) Server(names[i], &database);
    fputs("</ul>\n", stdout);
    DBAsciiAccessFree(names);
    DBAsciiAccessCloseKeepStaticDllInfo(database);
}

int main(void) {
    const char *method = getenv("REQUEST_METHOD");
    if (method != NULL && strcmp(method, "POST") == 0) AcknowledgePopups();
    KXSetMibPath(kMibDirectory);
    printf("Content-Type: text/html; charset=ISO-8859-1\r\n\r\n");
    fputs("<!DOCTYPE html>\n<html><head><title>Inventory</title>"
          "<link rel=\"stylesheet\" href=\"style.css\"></head>\n<body>\n<h1>Inventory</h1>\n", stdout);
    PopupBanner();
    Servers();
    fputs("</body></html>\n", stdout);
    return 0;
}
