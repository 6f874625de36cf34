#pragma once
// Reading a message's root record through the module's parser-factory
// registries, and printing what was read.
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

class HNKMessageIterator;

namespace hnrctl {

struct HnrctlRecord {
    std::string registry;  // which registry's factory read it, e.g. "VM configuration (HNKEnvConfig)"
    std::string className; // demangled run-time class, e.g. "HNR::HNREnvConfig"
    // Prints the record's fields, secrets as "(hidden)".
    std::function<void(std::ostream&)> print;
    // Writes the record at the cursor through its own factory, secrets emptied
    // when maskSecrets; 0 on success.
    std::function<int(HNKMessageIterator&, bool maskSecrets)> write;
};

// Looks the xsi:type key of the element at the cursor up in every registry
// (exact key, no default factory) and reads it with the first factory found.
// False with error set when no registry knows the key or the read failed.
bool readRecord(const HNKMessageIterator& it, HnrctlRecord& record, std::string& error);

// Titles of the registries readRecord tries, in order.
std::vector<std::string> registryTitles();

// Prints every element below the cursor whose text it holds as
// "  path = value" ("(hidden)" for elements named like a password).
void printElementFields(std::ostream& out, const HNKMessageIterator& it, const std::string& indent);

} // namespace hnrctl
