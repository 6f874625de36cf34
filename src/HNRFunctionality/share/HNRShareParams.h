#pragma once
// Where a share is and who connects to it.
#include <string>

namespace HNR {

class HNRShareParams {
public:
    HNRShareParams() = default;
    // A login without a password (or the reverse) clears both: a record is
    // fully authenticated or anonymous, never half.
    HNRShareParams(const std::string& path, const std::string& login, const std::string& password);

    bool isEmpty() const { return path.empty(); }
    bool isAnonymous() const { return login.empty(); }
    // Empties the path only; the credentials stay.
    void clear() { path.clear(); }

    std::string path;      // any accepted form, normally UNC
    std::string login;     // user, DOMAIN\user, DOMAIN/user or user@DOMAIN
    std::string password;  // clear text: never log it
};

} // namespace HNR
