// The test smbd's names, read from the variables scripts/with-smbd sets.
#include "smbd/SmbServer.h"

#include <cstdlib>

namespace HNRTest {

namespace {

std::string variable(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

} // namespace

const SmbServer& SmbServer::get()
{
    static const SmbServer server = [] {
        SmbServer s;
        s.server = variable("HNR_SMB_SERVER");
        s.guestShare = variable("HNR_SMB_GUEST_SHARE");
        s.guestDir = variable("HNR_SMB_GUEST_DIR");
        s.authShare = variable("HNR_SMB_AUTH_SHARE");
        s.authDir = variable("HNR_SMB_AUTH_DIR");
        s.user = variable("HNR_SMB_USER");
        s.password = variable("HNR_SMB_PASSWORD");
        s.conf = variable("HNR_SMB_CONF");
        s.smbdPid = std::atoi(variable("HNR_SMB_SMBD_PID").c_str());
        return s;
    }();
    return server;
}

std::string SmbServer::slashForm(std::string unc)
{
    for (char& c : unc)
        if (c == '\\')
            c = '/';
    return unc;
}

void SmbServerTest::SetUp()
{
    ASSERT_TRUE(smb.running()) << "run this test through scripts/with-smbd";
}

} // namespace HNRTest
