// net-snmp's MIB parser reads the MIB files. It is set up without any
// configuration or environment: no config files, no default MIB search path;
// the SMI roots and the commonest textual conventions come from module texts
// of our own, so no IETF MIB files are needed.
#include <dirent.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "mib_internal.h"
#include "mib_tree.h"
#include "platform/netsnmp_loader.h"

namespace kxsnmp {
namespace {

// net-snmp, once LoadTree has found it: everything below that uses it runs
// after LoadTree succeeded.
const kx::platform::NetSnmp &Snmp() { return *kx::platform::NetSnmpLibrary(); }

// The modules that name the SMI roots and the commonest textual conventions;
// MIB files import from them (and, through net-snmp's own mapping, from
// RFC1155-SMI and RFC1213-MIB), so no IETF MIB file is needed.
constexpr const char *kSmiModule = "SNMPv2-SMI";
constexpr const char *kTcModule = "SNMPv2-TC";

struct TextualConvention {
    std::string_view name, hint, syntax;
};

// The conventions that trap variables use most; each gives its object the
// syntax of the convention's base type.
constexpr TextualConvention kTextualConventions[] = {
    {"DisplayString", "255a", "OCTET STRING (SIZE (0..255))"},
    {"PhysAddress", "1x:", "OCTET STRING"},
    {"MacAddress", "1x:", "OCTET STRING (SIZE (6))"},
    {"TruthValue", "", "INTEGER { true(1), false(2) }"},
};

struct TreeState {
    bool loaded = false;
    std::string directory;
    std::vector<std::pair<int, std::string>> files;  // module and its file's name
};

TreeState &State() {
    static TreeState state;
    return state;
}

std::string SmiModuleText() {
    std::string text = std::string(kSmiModule) + " DEFINITIONS ::= BEGIN\n";
    for (const SmiRoot &root : SmiRoots())
        if (!root.parent.empty())
            text += std::string(root.name) + " OBJECT IDENTIFIER ::= { " + std::string(root.parent) + " " +
                    std::to_string(root.number) + " }\n";
    return text + "END\n";
}

std::string TcModuleText() {
    std::string text = std::string(kTcModule) + " DEFINITIONS ::= BEGIN\n";
    for (const TextualConvention &tc : kTextualConventions) {
        text += std::string(tc.name) + " ::= TEXTUAL-CONVENTION\n";
        if (!tc.hint.empty()) text += "    DISPLAY-HINT \"" + std::string(tc.hint) + "\"\n";
        text += "    STATUS current DESCRIPTION \"\" SYNTAX " + std::string(tc.syntax) + "\n";
    }
    return text + "END\n";
}

bool WriteAll(int fd, const std::string &text) {
    return write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

// net-snmp reads modules from files only: a built-in module is handed over
// as an anonymous in-memory file, which never touches the disk; where /proc
// is missing (a chroot), as a temporary file removed once it was read.
void ReadBuiltinModule(const std::string &text) {
    const int fd = memfd_create("kx-mib-module", MFD_CLOEXEC);
    const std::string path = "/proc/self/fd/" + std::to_string(fd);
    if (fd >= 0 && WriteAll(fd, text) && access(path.c_str(), R_OK) == 0) {
        Snmp().read_mib(path.c_str());
        close(fd);
        return;
    }
    if (fd >= 0) close(fd);
    char temporary[] = "/tmp/kx-mib-module.XXXXXX";
    const int file = mkstemp(temporary);
    if (file < 0) return;
    const bool written = WriteAll(file, text);
    close(file);
    if (written) Snmp().read_mib(temporary);
    unlink(temporary);
}

void RegisterDirectory(const std::string &directory) {
    DIR *dir = opendir(directory.c_str());
    if (dir == nullptr) return;
    std::vector<std::string> names;
    while (const dirent *entry = readdir(dir))
        if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
    closedir(dir);
    std::sort(names.begin(), names.end());
    for (const std::string &name : names) {
        const std::string path = directory + "/" + name;
        struct stat info {};
        if (stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode)) Snmp().add_mibfile(path.c_str(), name.c_str());
    }
}

void ConfigureParser(const std::string &directory) {
    Snmp().netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
    Snmp().snmp_set_mib_warnings(0);
    Snmp().snmp_set_mib_errors(0);
    // Only consulted for messages about missing modules; set so that net-snmp
    // never falls back to the environment or its compiled-in path.
    Snmp().netsnmp_set_mib_directory(directory.c_str());
}

std::string BaseName(const char *path) {
    const std::string_view text = path != nullptr ? path : "";
    const std::size_t slash = text.rfind('/');
    return std::string(slash == std::string_view::npos ? text : text.substr(slash + 1));
}

// The modules registered after the built-in ones are those of the
// directory's files; net-snmp numbers modules in the order they come.
std::vector<std::pair<int, std::string>> FileModules(int lastBuiltin) {
    std::vector<std::pair<int, std::string>> files;
    for (int id = lastBuiltin + 1;; ++id) {
        const struct module *module = Snmp().find_module(id);
        if (module == nullptr) break;
        files.emplace_back(id, BaseName(module->file));
    }
    return files;
}

}  // namespace

void LoadTree() {
    TreeState &state = State();
    const std::string directory = MibDirectory();
    if ((state.loaded && state.directory == directory) || kx::platform::NetSnmpLibrary() == nullptr) return;
    ConfigureParser(directory);
    // net-snmp sets its tables up once; for another directory it only drops
    // what it read (it keeps, and loses, its table of textual conventions:
    // a few kilobytes per change of directory).
    if (state.loaded)
        Snmp().unload_all_mibs();
    else
        Snmp().init_mib_internals();
    ReadBuiltinModule(SmiModuleText());
    ReadBuiltinModule(TcModuleText());
    const int lastBuiltin = std::max(Snmp().which_module(kSmiModule), Snmp().which_module(kTcModule));
    RegisterDirectory(directory);
    Snmp().read_all_mibs();
    state.loaded = true;
    state.directory = directory;
    state.files = FileModules(lastBuiltin);
}

OidMatch DeepestNode(const std::vector<std::uint32_t> &oid) {
    OidMatch match;
    if (!State().loaded) return match;
    struct tree *level = Snmp().get_tree_head();
    for (const std::uint32_t number : oid) {
        struct tree *found = nullptr;
        for (struct tree *node = level; node != nullptr; node = node->next_peer)
            if (node->subid == number) {
                found = node;
                break;
            }
        if (found == nullptr) break;
        match.node = found;
        ++match.matched;
        level = found->child_list;
    }
    return match;
}

struct tree *FindNode(const std::string &name, int moduleId) {
    if (!State().loaded) return nullptr;
    if (moduleId >= 0)
        if (struct tree *node = Snmp().find_tree_node(name.c_str(), moduleId)) return node;
    return Snmp().find_tree_node(name.c_str(), -1);
}

std::string NodeOid(const struct tree *node) {
    std::string oid;
    for (; node != nullptr; node = node->parent)
        oid.insert(0, (node->parent != nullptr ? "." : "") + std::to_string(node->subid));
    return oid;
}

bool IsFileModule(int moduleId) {
    const auto &files = State().files;
    return std::any_of(files.begin(), files.end(), [&](const auto &file) { return file.first == moduleId; });
}

std::string ModuleFileName(int moduleId) {
    for (const auto &[id, name] : State().files)
        if (id == moduleId) return name;
    return {};
}

std::optional<int> ModuleOfFile(std::string_view fileName) {
    for (const auto &[id, name] : State().files)
        if (EqualNoCase(name, fileName)) return id;
    return std::nullopt;
}

}  // namespace kxsnmp
