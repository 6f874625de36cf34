#include "share/HNRShareParams.h"

namespace HNR {

HNRShareParams::HNRShareParams(const std::string& path, const std::string& login,
                               const std::string& password)
    : path(path), login(login), password(password)
{
    if (this->login.empty() || this->password.empty()) {
        this->login.clear();
        this->password.clear();
    }
}

} // namespace HNR
