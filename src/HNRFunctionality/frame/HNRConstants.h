#pragma once
// Constants shared by every unit of the module.
#include <string>

namespace HNR {

// Namespace URIs of the platform's XML message types.
constexpr const char kTypesNamespace[] = "http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes";
constexpr const char kRelocatorNamespace[] = "http://www.tessaline.org/webservices/hnr/4.0.0/hnrrelocator";
constexpr const char kBackupNamespace[] = "http://www.tessaline.org/webservices/hnr/4.0.0/hnrbackupm";

// The env-type key under which the platform's environment factory registers.
constexpr const char kEnvTypeKey[] = "tessaline";

namespace {
// Each unit keeps its own pair, set while the library loads.
const std::string kEmptyString;
const std::string kEnvType(kEnvTypeKey);
} // namespace

} // namespace HNR
