#pragma once
// The framework's element dictionary: numeric element IDs of the framework's
// schema and the element names they stand for in the message tree (lower case
// with underscores, like the module's own tags).

class HNKElementDictionary {
public:
    // Name of element ID `id`; nullptr when the dictionary does not know it.
    static const char* findName(int id);
    // ID of the element named `name`; 0 when no ID has that name.
    static int findID(const char* name);

    struct Entry {
        int id;
        const char* name;
    };
    // Every entry, sorted by ID (for tests and tools).
    static const Entry* entries(unsigned& count);
};
