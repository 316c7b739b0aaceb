// Inside the MIB library: net-snmp's MIB tree, loaded from the MIB directory.
#ifndef KX_PLATFORM_LIBKXSNMP_MIB_TREE_H
#define KX_PLATFORM_LIBKXSNMP_MIB_TREE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct tree;  // a node of net-snmp's MIB tree

namespace kxsnmp {

// Makes the tree hold the SMI roots and every MIB file of the MIB directory;
// reads again when the directory changed since the last call.
void LoadTree();

// The deepest node on the path of oid and how many of its numbers it covers
// (nullptr and 0 when not even the first number is known).
struct OidMatch {
    struct tree *node = nullptr;
    std::size_t matched = 0;
};
OidMatch DeepestNode(const std::vector<std::uint32_t> &oid);

// The node named name, preferably of module moduleId (-1: any module).
struct tree *FindNode(const std::string &name, int moduleId);

// The dotted OID of a node.
std::string NodeOid(const struct tree *node);

// True when the module was read from a file of the MIB directory (not the
// built-in SMI roots).
bool IsFileModule(int moduleId);

// The name of the module's file in the MIB directory ("Q47.mib").
std::string ModuleFileName(int moduleId);

// The module read from the file named fileName (extension spelt in any case).
std::optional<int> ModuleOfFile(std::string_view fileName);

}  // namespace kxsnmp

#endif
