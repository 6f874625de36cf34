#pragma once
// Client of SMB/CIFS network shares.
#include <string>

#include "share/HNRShareParams.h"

namespace HNR {

class HNRShareConnection {
public:
    HNRShareConnection(const HNRShareConnection&) = delete;
    HNRShareConnection& operator=(const HNRShareConnection&) = delete;

    // Share path forms: UNC ("\\srv\share\dir"), canonical ("//srv/share/dir")
    // and URL ("smb://" + optional Base64 credentials + "srv/share/dir").

    // True when "smb://" occurs anywhere in s.
    static bool isSambaPath(const std::string& s);
    // True when s is longer than two characters and starts with two backslashes.
    static bool isUNCPath(const std::string& s);
    // URL form; the first two characters of params.path are taken to be the
    // leading backslashes and dropped unseen.
    static std::string convertToSamba(const HNRShareParams& params);
    // The record of a URL, path in UNC form; credentials only in the
    // "login:password@" form. An unusable URL gives a record with an empty path.
    static HNRShareParams convertFromSamba(const std::string& s);
    // dir = the parent of the canonized path, name = its last element; dir in
    // backslash form. Both empty when path holds nothing but separators.
    static void splitPath(const std::string& path, std::string& dir, std::string& name);
    // dir and name canonized and joined by one separator, in backslash form.
    static std::string combinePath(const std::string& dir, const std::string& name);
    // Canonical slash form of s; empty when s holds nothing but separators.
    static std::string canonizePath(const std::string& s);
};

} // namespace HNR
