#pragma once
// Share connections kept alive under caller-chosen keys, one mount per share
// for all keys that point at it. Process-wide, behind one lock.
#include <map>
#include <string>

#include <boost/shared_ptr.hpp>

#include "HNKLock.h"
#include "share/HNRShare.h"

namespace HNR {

// Holds the registry lock for its lifetime and gives access to the registry.
class HNRGetConnections {
public:
    typedef std::multimap<std::string, boost::shared_ptr<HNRShareConnection>> Connections;

    HNRGetConnections() : guard_(lock) {}
    HNRGetConnections(const HNRGetConnections&) = delete;
    HNRGetConnections& operator=(const HNRGetConnections&) = delete;

    Connections* operator->() { return &connections; }
    Connections& operator*() { return connections; }

    static Connections connections;
    static HNKLock lock;

private:
    HNKGuardT<HNKLock> guard_;
};

class HNRStaticConnections {
public:
    // Registers a connection to the share of params.path under key (a key may
    // hold several). A share already registered under any key is reused as it
    // is: the first caller's mount and credentials serve later callers. The
    // lock is held while a new connection mounts. localPath, when given,
    // receives the local path of params.path. False (nothing registered) when
    // connecting fails.
    static bool add(const HNRShareParams& params, const std::string& key, std::string* localPath = nullptr);
    // Erases every entry of key; a connection that no key holds any more
    // unmounts (if it mounted) and removes its mount point.
    static void remove(const std::string& key);
    // True when at least one entry has this key.
    static bool isExist(const std::string& key);
};

} // namespace HNR
