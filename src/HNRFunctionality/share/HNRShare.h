#pragma once
// Client of SMB/CIFS network shares.
#include <cstdint>
#include <string>
#include <vector>

#include "fsutil/HNRAutoDirectory.h"
#include "share/HNRShareParams.h"

namespace HNR {

// One entry of a folder on a share, as the server lists it.
struct HNRShareEntry {
    std::string name;
    bool isDirectory = false;
    std::uint64_t size = 0;       // bytes of a file; what the server says for a folder (usually 0)
    std::string attributes;       // as listed: "D", "A", "H", "N", combinations such as "DH"
    std::string modified;         // as listed, asctime form: "Fri Nov 20 23:12:02 2026"
};

// A connection mounts a share under a local directory for as long as it
// lives (mount.cifs); the static operations reach a share without a mount by
// running smbclient scripts. Every operation returns false after
// setErrorMessage() and a "[operation] message" log line; none throws.
class HNRShareConnection {
public:
    // Receives the progress of putFiles and getFiles.
    class Progress {
    public:
        explicit Progress(int period = 1) : period(period) {}
        // Percentage done: never lower than the last one, and 100.0 only once,
        // after the transfer succeeded.
        virtual void setProgress(double percent) = 0;
        virtual ~Progress() = default;

        // Polling passes (1.5 s each at most) between two progress
        // computations; below 1 counts as 1.
        int period;
    };

    HNRShareConnection() = default;
    // Unmounts what this object mounted, then removes its mount point.
    ~HNRShareConnection();
    HNRShareConnection(const HNRShareConnection&) = delete;
    HNRShareConnection& operator=(const HNRShareConnection&) = delete;

    // Disconnects, then mounts the share of params.path under a free mount
    // point (getTempDir() + "mnt0" .. "mnt99"), or reuses the directory where
    // it is already mounted; true when params.path exists inside it.
    bool connect(const HNRShareParams& params);
    // Unmounts the share if this object mounted it; on failure stays connected.
    bool disconnect();
    // Canonical path of the connected share ("//srv/share"); empty when not connected.
    const std::string& getSharePath() const { return sharePath_; }
    // Local directory where the share is mounted.
    const std::string& getConnectedSharePath() const { return connectedSharePath_; }
    bool isConnected() const { return !sharePath_.empty(); }
    void clearPaths();

    // True when the share of params.path answers a listing.
    static bool check(const HNRShareParams& params);
    // True when the file or folder params.path answers a listing.
    static bool checkFile(const HNRShareParams& params);
    // Uploads local files and trees into the folder params.path. keepTopDirs:
    // a listed folder arrives as a folder; otherwise only its contents do.
    static bool putFiles(const std::vector<std::string>& files, const HNRShareParams& params, bool keepTopDirs,
                         Progress* progress);
    // Downloads files and trees named relative to params.path into localDir,
    // after checking that localDir has room for all of them.
    static bool getFiles(const std::vector<std::string>& files, const HNRShareParams& params,
                         const std::string& localDir, bool keepTopDirs, Progress* progress);
    // Creates dir (relative to params.path); its parent must exist.
    static bool createDir(const std::string& dir, const HNRShareParams& params);
    // Removes dir (relative to params.path) with everything in it.
    static bool removeDir(const std::string& dir, const HNRShareParams& params);
    // entries := the entries of folder params.path (no "." and ".."), in the
    // server's order. One smbclient run.
    static bool list(const HNRShareParams& params, std::vector<HNRShareEntry>& entries);
    // total := bytes of the files and trees (relative to params.path).
    static bool size(const std::vector<std::string>& files, const HNRShareParams& params, std::uint64_t& total);

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

private:
    std::string sharePath_;
    std::string connectedSharePath_;
    // Set only when this object mounted the share itself.
    HNRAutoDirectory mountPoint_;
};

} // namespace HNR
