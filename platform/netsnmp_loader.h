// net-snmp, loaded on the first call that needs it. Most console pages read
// no MIB and ask no agent; linked directly, net-snmp and the TLS libraries
// behind it would be loaded and relocated at the start of every CGI request
// all the same. Header-only: the MIB library and the trap file library each
// keep their own table of entry points into the one loaded copy.
#ifndef KX_PLATFORM_NETSNMP_LOADER_H
#define KX_PLATFORM_NETSNMP_LOADER_H

#include <dlfcn.h>

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include "platform/companion_loader.h"

#ifndef KX_NETSNMP_SONAME
#define KX_NETSNMP_SONAME "libnetsnmp.so"
#endif

namespace kx::platform {

// The net-snmp operations the companions call, by their own names.
struct NetSnmp {
    decltype(&::add_mibfile) add_mibfile;
    decltype(&::find_module) find_module;
    decltype(&::find_tree_node) find_tree_node;
    decltype(&::get_tree_head) get_tree_head;
    decltype(&::init_mib_internals) init_mib_internals;
    decltype(&::netsnmp_ds_set_boolean) netsnmp_ds_set_boolean;
    decltype(&::netsnmp_set_mib_directory) netsnmp_set_mib_directory;
    decltype(&::read_all_mibs) read_all_mibs;
    decltype(&::read_mib) read_mib;
    decltype(&::snmp_set_mib_errors) snmp_set_mib_errors;
    decltype(&::snmp_set_mib_warnings) snmp_set_mib_warnings;
    decltype(&::unload_all_mibs) unload_all_mibs;
    decltype(&::which_module) which_module;
    decltype(&::snmp_add_null_var) snmp_add_null_var;
    decltype(&::snmp_free_pdu) snmp_free_pdu;
    decltype(&::snmp_oid_compare) snmp_oid_compare;
    decltype(&::snmp_pdu_create) snmp_pdu_create;
    decltype(&::snmp_sess_close) snmp_sess_close;
    decltype(&::snmp_sess_init) snmp_sess_init;
    decltype(&::snmp_sess_open) snmp_sess_open;
    decltype(&::snmp_sess_synch_response) snmp_sess_synch_response;
};

namespace netsnmp_detail {

// Loads the library and fills the table; false when either fails.
inline bool Load(NetSnmp &n) {
    void *library = dlopen(KX_NETSNMP_SONAME, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return false;
#define KX_NETSNMP_RESOLVE(name) Resolve(library, #name, n.name)
    return KX_NETSNMP_RESOLVE(add_mibfile) && KX_NETSNMP_RESOLVE(find_module) &&
           KX_NETSNMP_RESOLVE(find_tree_node) && KX_NETSNMP_RESOLVE(get_tree_head) &&
           KX_NETSNMP_RESOLVE(init_mib_internals) && KX_NETSNMP_RESOLVE(netsnmp_ds_set_boolean) &&
           KX_NETSNMP_RESOLVE(netsnmp_set_mib_directory) && KX_NETSNMP_RESOLVE(read_all_mibs) &&
           KX_NETSNMP_RESOLVE(read_mib) && KX_NETSNMP_RESOLVE(snmp_set_mib_errors) &&
           KX_NETSNMP_RESOLVE(snmp_set_mib_warnings) && KX_NETSNMP_RESOLVE(unload_all_mibs) &&
           KX_NETSNMP_RESOLVE(which_module) && KX_NETSNMP_RESOLVE(snmp_add_null_var) &&
           KX_NETSNMP_RESOLVE(snmp_free_pdu) && KX_NETSNMP_RESOLVE(snmp_oid_compare) &&
           KX_NETSNMP_RESOLVE(snmp_pdu_create) && KX_NETSNMP_RESOLVE(snmp_sess_close) &&
           KX_NETSNMP_RESOLVE(snmp_sess_init) && KX_NETSNMP_RESOLVE(snmp_sess_open) &&
           KX_NETSNMP_RESOLVE(snmp_sess_synch_response);
#undef KX_NETSNMP_RESOLVE
}

}  // namespace netsnmp_detail

// net-snmp's entry points, loaded on the first call of the process; null
// when the library cannot be loaded (then every use reports its failure as
// when the MIB or the agent is missing). The library stays loaded.
inline const NetSnmp *NetSnmpLibrary() {
    static NetSnmp table;
    static const bool loaded = netsnmp_detail::Load(table);
    return loaded ? &table : nullptr;
}

}  // namespace kx::platform

#endif
