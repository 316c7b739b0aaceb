// MIB look-ups over net-snmp's tree: which MIB defines an OID, the object an
// OID lies under, OIDs, syntax and enumerations of objects.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include "companion/libKXsnmp_names.h"
#include "mib_internal.h"
#include "mib_tree.h"
#include "platform/netsnmp_loader.h"

// The handle of a MIB: the net-snmp module read from the MIB file.
struct KXMib {
    int ModuleId;
};

namespace kxsnmp {
namespace {

// The largest enumeration value that gets a slot in KXMibValues.Names.
constexpr int kHighestEnumValue = 4095;

struct SyntaxName {
    int type;
    std::string_view text;
};

// net-snmp's simple syntaxes and the words the trap texts and trap files use.
constexpr SyntaxName kSyntaxNames[] = {
    {TYPE_OBJID, "OBJECTID"},         {TYPE_OCTETSTR, "OCTETSTRING"},
    {TYPE_INTEGER, "INTEGER"},        {TYPE_INTEGER32, "INTEGER"},
    {TYPE_NETADDR, "NETADDRESS"},     {TYPE_IPADDR, "IPADDRESS"},
    {TYPE_COUNTER, "COUNTER"},        {TYPE_GAUGE, "GAUGE"},
    {TYPE_TIMETICKS, "TIMETICKS"},    {TYPE_OPAQUE, "OPAQUE"},
    {TYPE_NULL, "NULL"},              {TYPE_COUNTER64, "COUNTER64"},
    {TYPE_BITSTRING, "BITSTRING"},    {TYPE_NSAPADDRESS, "NSAPADDRESS"},
    {TYPE_UINTEGER, "UINTEGER"},      {TYPE_UNSIGNED32, "UNSIGNED32"},
};

std::string_view SyntaxText(int type) {
    for (const SyntaxName &row : kSyntaxNames)
        if (row.type == type) return row.text;
    return {};
}

// The node an OID lies under, when a MIB file (not only the SMI) knows it.
struct tree *DefinedNode(const char *oid) {
    if (oid == nullptr) return nullptr;
    const auto numbers = ParseDottedOid(oid);
    if (!numbers) return nullptr;
    LoadTree();
    struct tree *node = DeepestNode(*numbers).node;
    return node != nullptr && IsFileModule(node->modid) ? node : nullptr;
}

// The object named object (its OID objectOid decides when given).
struct tree *ObjectNode(const KXMib *mib, const char *object, const char *objectOid) {
    LoadTree();
    if (objectOid != nullptr) {
        const auto numbers = ParseDottedOid(objectOid);
        if (!numbers) return nullptr;
        const OidMatch match = DeepestNode(*numbers);
        return match.matched == numbers->size() ? match.node : nullptr;
    }
    if (object == nullptr) return nullptr;
    return FindNode(object, mib != nullptr ? mib->ModuleId : -1);
}

// The enumeration of node as one block: record, name pointers, texts.
KXMibValues *EnumerationBlock(const struct tree *node, int count) {
    std::size_t texts = std::strlen(node->label) + 1;
    for (const enum_list *e = node->enums; e != nullptr; e = e->next)
        if (e->value >= 0 && e->value <= kHighestEnumValue) texts += std::strlen(e->label) + 1;
    const std::size_t slots = static_cast<std::size_t>(count);
    auto *block = static_cast<char *>(std::calloc(1, sizeof(KXMibValues) + slots * sizeof(char *) + texts));
    if (block == nullptr) return nullptr;
    auto *values = reinterpret_cast<KXMibValues *>(block);
    values->Names = reinterpret_cast<char **>(block + sizeof(KXMibValues));
    char *text = reinterpret_cast<char *>(values->Names + slots);
    values->Request = KX_MIB_VALUES_ENUMERATION;
    values->NameCount = count;
    // Each text goes behind the previous one; the block was sized for all.
    const auto put = [&text](const char *label) {
        const std::size_t size = std::strlen(label) + 1;
        char *copy = static_cast<char *>(std::memcpy(text, label, size));
        text += size;
        return copy;
    };
    values->Object = put(node->label);
    for (const enum_list *e = node->enums; e != nullptr; e = e->next) {
        if (e->value < 0 || e->value > kHighestEnumValue) continue;
        char *label = put(e->label);
        const std::size_t slot = static_cast<std::size_t>(e->value);
        if (values->Names[slot] == nullptr) values->Names[slot] = label;
    }
    return values;
}

}  // namespace
}  // namespace kxsnmp

extern "C" {

char *KXGetMibname(KXMib **mib, const char *oid) {
    if (mib != nullptr) *mib = nullptr;
    const struct tree *node = kxsnmp::DefinedNode(oid);
    if (node == nullptr) return nullptr;
    char *name = kxsnmp::HeapCopy(kxsnmp::ModuleFileName(node->modid));
    auto *handle = static_cast<KXMib *>(std::malloc(sizeof(KXMib)));
    if (name == nullptr || handle == nullptr) {
        std::free(name);
        std::free(handle);
        return nullptr;
    }
    handle->ModuleId = node->modid;
    if (mib != nullptr)
        *mib = handle;
    else
        std::free(handle);
    return name;
}

int KXGetName(KXMib * /*mib*/, const char *oid, char **object, char **objectOid, int /*flags*/) {
    if (object != nullptr) *object = nullptr;
    if (objectOid != nullptr) *objectOid = nullptr;
    const auto numbers = oid != nullptr ? kxsnmp::ParseDottedOid(oid) : std::nullopt;
    if (!numbers) return -1;
    kxsnmp::LoadTree();
    const struct tree *node = kxsnmp::DeepestNode(*numbers).node;
    if (node == nullptr) return -1;
    char *name = kxsnmp::HeapCopy(node->label);
    char *dotted = kxsnmp::HeapCopy(kxsnmp::NodeOid(node));
    if (name == nullptr || dotted == nullptr) {
        std::free(name);
        std::free(dotted);
        return -1;
    }
    if (object != nullptr) *object = name; else std::free(name);
    if (objectOid != nullptr) *objectOid = dotted; else std::free(dotted);
    return 0;
}

int KXGetOID(const char *mibFile, const char *tableEntry, const char *column, char **oid) {
    if (oid == nullptr) return -1;
    *oid = nullptr;
    const char *object = column != nullptr ? column : tableEntry;
    if (mibFile == nullptr || object == nullptr) return -1;
    kxsnmp::LoadTree();
    const auto module = kxsnmp::ModuleOfFile(mibFile);
    if (!module) return -1;
    const struct tree *node = kx::platform::NetSnmpLibrary()->find_tree_node(object, *module);
    if (node == nullptr) return -1;
    if (column != nullptr && tableEntry != nullptr &&
        (node->parent == nullptr || std::strcmp(node->parent->label, tableEntry) != 0))
        return -1;
    *oid = kxsnmp::HeapCopy(kxsnmp::NodeOid(node));
    return *oid != nullptr ? 0 : -1;
}

int KXGetSyntax(KXMib *mib, const char *object, const char *objectOid, char **syntax) {
    if (syntax == nullptr) return -1;
    *syntax = nullptr;
    const struct tree *node = kxsnmp::ObjectNode(mib, object, objectOid);
    const std::string_view text = node != nullptr ? kxsnmp::SyntaxText(node->type) : std::string_view{};
    if (text.empty()) return -1;
    *syntax = kxsnmp::HeapCopy(text);
    return *syntax != nullptr ? 0 : -1;
}

int KXGetValues(KXMib *mib, const char *object, const char *objectOid, int request, KXMibValues **values) {
    if (values == nullptr) return -1;
    *values = nullptr;
    if (request != KX_MIB_VALUES_ENUMERATION) return -1;
    const struct tree *node = kxsnmp::ObjectNode(mib, object, objectOid);
    if (node == nullptr) return -1;
    int count = 0;
    for (const enum_list *e = node->enums; e != nullptr; e = e->next)
        if (e->value >= 0 && e->value <= kxsnmp::kHighestEnumValue) count = std::max(count, e->value + 1);
    if (count == 0) return 0;
    *values = kxsnmp::EnumerationBlock(node, count);
    return *values != nullptr ? count : -1;
}

void KXFreeResources(void *resource) { std::free(resource); }

}  // extern "C"
