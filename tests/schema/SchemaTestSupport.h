#pragma once
// Test support: the validator over the source tree's schema/ folder, and a
// readable list of violations for failure messages.
#include "HnrctlSchemaValidator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

inline hnrctl::HnrctlSchemaValidator& schemaValidator()
{
    static hnrctl::HnrctlSchemaValidator validator(std::string(HNR_SOURCE_DIR) + "/schema");
    return validator;
}

// "" when the text is valid, else one "line:column: message" per violation.
inline std::string schemaProblems(const std::string& text)
{
    std::vector<hnrctl::HnrctlSchemaViolation> violations;
    std::string error;
    bool valid = schemaValidator().validate(text, violations, error);
    EXPECT_EQ("", error);
    std::string out;
    for (const hnrctl::HnrctlSchemaViolation& v : violations)
        out += std::to_string(v.line) + ":" + std::to_string(v.column) + ": " + v.message + "\n";
    EXPECT_EQ(valid, out.empty());
    return out;
}
