#pragma once
// Internal to the share client (not installed): a share location parsed once
// per operation, so that no run, poll or message parses the path again.
#include <string>

#include <boost/filesystem/path.hpp>

#include "share/HNRShareParams.h"

class GenExec;

namespace HNR {

class HNRShareLocation {
public:
    // Parses params for function. False (message set, logged under function)
    // before any tool runs when params.path holds a NUL or a ".." component,
    // or its login or password cannot be carried to smbclient. A path that
    // is no share is left for the run to refuse, with its own message.
    bool parse(const char* function, const HNRShareParams& params);

    const HNRShareParams& params() const { return params_; }
    // Canonical slash form ("//srv/share/dir").
    const boost::filesystem::path& path() const { return path_; }
    // The folder inside the share, slash form, no leading slash ("" at the root).
    const std::string& folder() const { return folder_; }

    // smbclientApi on this location with its credentials.
    bool run(const std::string& command, std::string& output, GenExec* runner) const;

    // A name relative to the folder, slash form without leading or trailing
    // slashes ("" when it names nothing).
    static std::string relative(const std::string& name);
    // a and b joined with one slash; either may be empty.
    static std::string join(const std::string& a, const std::string& b);
    static std::string parentOf(const std::string& relative);
    static std::string leafOf(const std::string& relative);

private:
    HNRShareParams params_;
    boost::filesystem::path path_;
    std::string folder_;
};

// False (message set, logged under function) when login or password cannot
// be carried to smbclient: a '%' in the login, a line break or NUL in either.
bool credentialsCarried(const char* function, const HNRShareParams& params);

} // namespace HNR
