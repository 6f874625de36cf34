#pragma once
// The private smbd every server-backed test program runs beside: scripts/with-smbd
// starts it in a network namespace of its own, then runs the program with the
// server's shares, folders and user in HNR_SMB_* variables. This is the one
// place that reads them.
#include <gtest/gtest.h>

#include <string>

namespace HNRTest {

struct SmbServer {
    std::string server;     // 127.0.0.1
    std::string guestShare; // \\127.0.0.1\guest (user "guest", empty password)
    std::string guestDir;   // local folder behind the guest share
    std::string authShare;  // \\127.0.0.1\auth (only user with password)
    std::string authDir;    // local folder behind the protected share
    std::string user, password;
    std::string conf; // the server's configuration file
    int smbdPid = 0;  // the server's main process

    // As scripts/with-smbd handed it over, read once; every field is empty
    // (pid 0) when the program was not started through it.
    static const SmbServer& get();
    bool running() const { return !guestShare.empty() && !authShare.empty(); }
    // "\\127.0.0.1\guest" -> "//127.0.0.1/guest", the form smbclient takes.
    static std::string slashForm(std::string unc);
};

// Base of every test that needs the server: it fails, never skips, when the
// program was not started through scripts/with-smbd.
class SmbServerTest : public ::testing::Test {
protected:
    void SetUp() override;
    const SmbServer& smb = SmbServer::get();
};

} // namespace HNRTest
