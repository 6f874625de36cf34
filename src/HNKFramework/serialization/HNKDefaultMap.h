#pragma once
// Numeric namespace and type IDs of the framework's own records and the names
// they stand for. Writers of the framework's base records name their type by
// number; type stamps and registry keys always use the names.

class HNKDefaultMap {
public:
    // Namespace URI of numeric namespace `nsid`; "" (never null) when unknown.
    static const char* findNSID(unsigned nsid);
    // XML type name of numeric type `typeId`; "" (never null) when unknown.
    static const char* findTypeID(unsigned typeId);
};

// The framework's numeric namespaces.
enum HNKNamespaceID : unsigned {
    HNK_NS_TYPES = 292,     // environments, configurations, virtualization, network
    HNK_NS_DEVICES = 278,   // host devices
    HNK_NS_RELOCATOR = 294, // clone and migration options
    HNK_NS_BACKUP = 282,    // backup options
};

// The framework's numeric types.
enum HNKTypeID : unsigned {
    HNK_TYPE_ENV_CONFIG = 120,
    HNK_TYPE_VENV_CONFIG = 121,
    HNK_TYPE_ENV = 122,
    HNK_TYPE_VT_INFO = 151,
    HNK_TYPE_VT_SETTINGS = 152,
    HNK_TYPE_NET_NIC = 167,
    HNK_TYPE_COMMON_DEVICE = 301,
    HNK_TYPE_MIGRATOR_CLONE_OPTIONS = 275,
    HNK_TYPE_V2V_MIGRATE_OPTIONS = 277,
    HNK_TYPE_BACKUP_OPTIONS = 107,
};
