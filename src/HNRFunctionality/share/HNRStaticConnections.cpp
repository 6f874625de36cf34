// The persistent connection registry.
#include "share/HNRStaticConnections.h"

#include <exception>

#include <boost/filesystem/path.hpp>
#include <boost/make_shared.hpp>

#include "HNKErrorMessage.h"
#include "Logger.h"
#include "share/HNRSharePaths.h"

namespace fs = boost::filesystem;

namespace HNR {

HNRGetConnections::Connections HNRGetConnections::connections;
HNKLock HNRGetConnections::lock;

bool HNRStaticConnections::add(const HNRShareParams& params, const std::string& key, std::string* localPath)
{
    try {
        HNRGetConnections registry;
        const fs::path path = createCanonized(params.path);
        const fs::path target = getShareFromPath(path);

        boost::shared_ptr<HNRShareConnection> connection;
        for (const auto& entry : *registry) {
            if (createCanonized(entry.second->getSharePath()) == target) {
                connection = entry.second;
                break;
            }
        }
        if (!connection) {
            boost::shared_ptr<HNRShareConnection> fresh = boost::make_shared<HNRShareConnection>();
            if (!fresh->connect(params))
                return false;
            connection = fresh;
        }
        registry->insert(std::make_pair(key, connection));
        if (localPath)
            *localPath = (createCanonized(connection->getConnectedSharePath()) / getRelativeFromPath(path)).string();
        return true;
    } catch (const std::exception& e) {
        setErrorMessage("Can't register connection '%s': %s", key.c_str(), e.what());
        Logger::put(1, "[%s] %s", "add", getErrorMessage().c_str());
        return false;
    }
}

void HNRStaticConnections::remove(const std::string& key)
{
    HNRGetConnections registry;
    registry->erase(key);
}

bool HNRStaticConnections::isExist(const std::string& key)
{
    HNRGetConnections registry;
    return registry->find(key) != registry->end();
}

} // namespace HNR
