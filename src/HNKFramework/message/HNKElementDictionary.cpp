#include "HNKElementDictionary.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

// Add new IDs anywhere: the table is sorted once on first use.
const HNKElementDictionary::Entry kEntries[] = {
    // VM configuration
    {1114, "device"},                        // item of a VM device list
    {1647, "offline_management_enabled"},    // flag
    {1747, "offline_service"},               // item of the offline services set
    // VM network device
    {2047, "ip_address"},                    // item of the IP address list
    {1281, "dns_server"},                    // item of the first string set
    {1558, "search_domain"},                 // item of the second string set
    // virtualization information
    {1223, "vt_product_name"},
    {1278, "vt_product_version"},
    // network adapters and service
    {1007, "virtual_nic_index"},
    {1192, "network_service_state"},
    {1421, "real_nic_index"},
    // clone options
    {1026, "clone_name"},
    {1152, "linked_clone"},                  // presence means true
    {1185, "vm_configuration"},
    // migrate and backup options
    {1687, "target_host"},
    {1962, "target_path"},
    {1704, "operation_flags"},
    {2035, "bandwidth_limit"},
    // framework base records: host device, virtualization, network, options
    {3001, "device_name"},
    {3002, "device_description"},
    {3011, "vt_layer_type"},
    {3012, "max_running_vms"},
    {3021, "settings_revision"},
    {3022, "server_name"},
    {3031, "net_device_name"},
    {3032, "mac_address"},
    {3033, "nic_enabled"},
    {3041, "clone_target_folder"},
    {3042, "clone_copy_mode"},
    {3051, "migrate_source_host"},
    {3052, "migrate_mode"},
    {3061, "backup_description"},
    {3062, "backup_archive_name"},
    {3063, "backup_disks"},                  // wrapper of the disk list
    {3064, "disk_id"},                       // item of the disk list
    {3065, "exclude_list"},
    {3066, "exclude_pattern"},               // item of an exclude list
    {3067, "ds_location"},                   // optional storage location
    {3068, "ds_path"},
    {3069, "auth_name"},
    {3070, "auth_user"},
    {3071, "auth_domain"},
};

struct Table {
    std::vector<HNKElementDictionary::Entry> byId;
    // By ID, for findName (asked for every item of a list): open addressing
    // over a power of two at least twice the entries, id 0 empty.
    std::vector<HNKElementDictionary::Entry> slots;
    Table() : byId(std::begin(kEntries), std::end(kEntries))
    {
        std::sort(byId.begin(), byId.end(),
                  [](const HNKElementDictionary::Entry& a, const HNKElementDictionary::Entry& b) {
                      return a.id < b.id;
                  });
        size_t size = 16;
        while (size < 2 * byId.size())
            size *= 2;
        slots.assign(size, HNKElementDictionary::Entry{0, nullptr});
        for (const HNKElementDictionary::Entry& e : byId) {
            size_t i = slotOf(e.id);
            while (slots[i].id != 0)
                i = (i + 1) & (slots.size() - 1);
            slots[i] = e;
        }
    }
    size_t slotOf(int id) const
    {
        return static_cast<size_t>((static_cast<uint32_t>(id) * 0x9E3779B1u) >> 16) & (slots.size() - 1);
    }
};

const Table& table()
{
    static const Table t;
    return t;
}

} // namespace

const char* HNKElementDictionary::findName(int id)
{
    if (id == 0)
        return nullptr;
    const Table& t = table();
    for (size_t i = t.slotOf(id);; i = (i + 1) & (t.slots.size() - 1)) {
        const Entry& e = t.slots[i];
        if (e.id == id)
            return e.name;
        if (e.id == 0)
            return nullptr;
    }
}

int HNKElementDictionary::findID(const char* name)
{
    if (!name)
        return 0;
    for (const Entry& e : table().byId)
        if (std::strcmp(e.name, name) == 0)
            return e.id;
    return 0;
}

const HNKElementDictionary::Entry* HNKElementDictionary::entries(unsigned& count)
{
    const std::vector<Entry>& v = table().byId;
    count = static_cast<unsigned>(v.size());
    return v.data();
}
