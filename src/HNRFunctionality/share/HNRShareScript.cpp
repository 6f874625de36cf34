// smbclient scripts: quoting, refusals and splitting into runs.
#include "share/HNRShareScript.h"

#include "share/HNRSharePaths.h"
#include "share/HNRShareTools.h"

namespace HNR {

namespace {

const char kUnsafeName[] = "holds ';', '\"', a line break or NUL, which a smbclient script cannot carry";

bool hasParentComponent(const std::string& name)
{
    std::size_t begin = 0;
    while (begin <= name.size()) {
        std::size_t end = name.find_first_of("/\\", begin);
        if (end == std::string::npos)
            end = name.size();
        if (name.compare(begin, end - begin, "..") == 0)
            return true;
        begin = end + 1;
    }
    return false;
}

} // namespace

std::string printableName(const std::string& name)
{
    std::string shown;
    shown.reserve(name.size());
    for (char c : name) {
        if (c == '\0')
            shown += "\\0";
        else
            shown += c;
    }
    return shown;
}

HNRShareScript::HNRShareScript(std::string head, std::size_t maxLength)
    : head_(std::move(head)), maxLength_(maxLength)
{
}

int HNRShareScript::add(const char* function, const std::string& fragments)
{
    if (head_.size() + fragments.size() > maxLength_) {
        reportError(function, "Can't run smbclient: one command is longer than a script may be (" +
                                  std::to_string(maxLength_) + " characters): '" +
                                  fragments.substr(0, 200) + "...'");
        return -1;
    }
    if (scripts_.empty() || startNew_ || scripts_.back().size() + fragments.size() > maxLength_)
        scripts_.push_back(head_);
    startNew_ = false;
    scripts_.back() += fragments;
    return static_cast<int>(scripts_.size()) - 1;
}

void HNRShareScript::changeHead(std::string head, const std::string& fragments)
{
    head_ = std::move(head);
    if (scripts_.empty())
        return;
    if (scripts_.back().size() + fragments.size() <= maxLength_)
        scripts_.back() += fragments;
    else
        startNew_ = true;
}

std::string HNRShareScript::list(const std::string& path) { return "; ls " + remoteQuote(path); }

std::string HNRShareScript::put(const std::string& local, const std::string& remote)
{
    return "; put " + localQuote(local) + " " + remoteQuote(remote);
}

std::string HNRShareScript::mkdir(const std::string& dir) { return "; mkdir " + remoteDirQuote(dir); }

std::string HNRShareScript::lcd(const std::string& localDir) { return "; lcd " + localQuote(localDir); }

std::string HNRShareScript::cdAbsolute(const std::string& dir) { return "; cd " + remoteDirQuote("/" + dir); }

std::string HNRShareScript::mget(const std::string& name) { return "; mget " + localQuote(name); }

std::string HNRShareScript::localQuote(const std::string& path) { return "\"" + path + "\""; }

std::string HNRShareScript::remoteQuote(const std::string& path) { return "\"" + toBackslashes(path) + "\""; }

std::string HNRShareScript::remoteDirQuote(const std::string& path)
{
    return "\"" + toBackslashes(path) + "\\\"";
}

bool HNRShareScript::carries(const char* function, const std::string& what, const std::string& name)
{
    if (isSafeForSmbScript(name))
        return true;
    reportError(function, what + " '" + printableName(name) + "' " + kUnsafeName);
    return false;
}

bool HNRShareScript::staysInside(const char* function, const std::string& what, const std::string& name)
{
    if (name.find('\0') != std::string::npos) {
        reportError(function, what + " '" + printableName(name) + "' holds a NUL character, which no tool can carry");
        return false;
    }
    if (hasParentComponent(name)) {
        reportError(function, what + " '" + name +
                                  "' has a '..' component: names must stay inside the folder they are relative to");
        return false;
    }
    return true;
}

} // namespace HNR
