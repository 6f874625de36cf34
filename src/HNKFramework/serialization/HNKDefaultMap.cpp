#include "HNKDefaultMap.h"

#include <cstddef>

namespace {

struct NamedID {
    unsigned id;
    const char* name;
};

#define HNK_NS_BASE "http://www.tessaline.org/webservices/hnk/4.0.0/"

const NamedID kNamespaces[] = {
    {HNK_NS_TYPES, HNK_NS_BASE "hnktypes"},
    {HNK_NS_DEVICES, HNK_NS_BASE "hnkdevices"},
    {HNK_NS_RELOCATOR, HNK_NS_BASE "hnkrelocator"},
    {HNK_NS_BACKUP, HNK_NS_BASE "hnkbackupm"},
};

// Distinct from the module's type names, so a framework base and the
// module's derived record never claim one key.
const NamedID kTypes[] = {
    {HNK_TYPE_ENV_CONFIG, "env_config_baseType"},
    {HNK_TYPE_VENV_CONFIG, "venv_config_baseType"},
    {HNK_TYPE_ENV, "env_baseType"},
    {HNK_TYPE_VT_INFO, "vt_info_baseType"},
    {HNK_TYPE_VT_SETTINGS, "vt_settings_baseType"},
    {HNK_TYPE_NET_NIC, "net_nic_baseType"},
    {HNK_TYPE_COMMON_DEVICE, "common_deviceType"},
    {HNK_TYPE_MIGRATOR_CLONE_OPTIONS, "clone_options_baseType"},
    {HNK_TYPE_V2V_MIGRATE_OPTIONS, "migrate_options_baseType"},
    {HNK_TYPE_BACKUP_OPTIONS, "backup_options_baseType"},
};

template <std::size_t N>
const char* find(const NamedID (&table)[N], unsigned id)
{
    for (const NamedID& e : table)
        if (e.id == id)
            return e.name;
    return "";
}

} // namespace

const char* HNKDefaultMap::findNSID(unsigned nsid) { return nsid ? find(kNamespaces, nsid) : ""; }

const char* HNKDefaultMap::findTypeID(unsigned typeId) { return typeId ? find(kTypes, typeId) : ""; }
