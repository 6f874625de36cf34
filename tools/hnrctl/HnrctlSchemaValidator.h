#pragma once
// Checks a message against the module's XML schema (schema/*.xsd) with
// libxml2's schema validator. A message's root element has an arbitrary
// name and is typed by its xsi:type, so the validator declares the root's
// name (with any type) in a small driver schema that imports every
// namespace, and requires the xsi:type itself.
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace hnrctl {

struct HnrctlSchemaViolation {
    int line = 0;   // 1-based; 0 when unknown
    int column = 0; // 1-based; 0 when unknown
    std::string message;
};

class HnrctlSchemaValidator {
public:
    // The folder of hnrtypes.xsd and the other schema files.
    explicit HnrctlSchemaValidator(const std::string& schemaDir);
    ~HnrctlSchemaValidator();
    HnrctlSchemaValidator(const HnrctlSchemaValidator&) = delete;
    HnrctlSchemaValidator& operator=(const HnrctlSchemaValidator&) = delete;

    // Validates one message text. True when it is valid; false with the
    // violations (never empty) otherwise. `error` is set, and false returned
    // with no violations, only when the schema itself could not be loaded.
    bool validate(const std::string& text, std::vector<HnrctlSchemaViolation>& violations, std::string& error);

    const std::string& schemaDir() const { return dir_; }

    // The schema folder: $HNR_SCHEMA_DIR when set, else the installed folder
    // next to the executable (../share/hnrfunctionality/schema), else the
    // configured install folder, else the source tree's schema/ folder.
    // Empty when none holds hnrtypes.xsd.
    static std::string findSchemaDir();

private:
    struct Compiled;
    Compiled* compiledFor(const std::string& rootName, std::string& error);

    std::string dir_;
    std::map<std::string, std::unique_ptr<Compiled>> byRoot_;
};

} // namespace hnrctl
